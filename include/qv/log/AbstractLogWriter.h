#ifndef QV_LOG_ABSTRACTLOGWRITER_H
#define QV_LOG_ABSTRACTLOGWRITER_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/io/Writer.h>
#include <qv/log/ILogProcessor.h>

#include <string>

namespace qv {
namespace log {

// A processor that formats each entry as text, writes it to a Writer in one
// call and flushes, so that no entry is lost when the process dies. Writers
// take no lock: put a MultiProcessor, a one-thread AsyncProcessor or a
// SyncLogger in front of them. The Writer is held, never closed; its errors
// pass out of process() and that entry is lost.
class QV_EXPORT AbstractLogWriter : public Object, public ILogProcessor {
    QV_DECLARE_INTERFACE_MAP()

public:
    ~AbstractLogWriter() noexcept(false) override;
    AbstractLogWriter(const AbstractLogWriter&) = delete;
    AbstractLogWriter& operator=(const AbstractLogWriter&) = delete;

    void process(const ILogEntry* entry) override;
    // Flushes the writer.
    virtual void flush();

protected:
    // ResultException 0x80070057 for a null writer.
    explicit AbstractLogWriter(io::Writer* writer);
    virtual String format(const ILogEntry* entry) = 0;
    // Appends the entry's text, which process() then writes in one call. The
    // base appends format(entry); a writer overrides it to build the same
    // text without the Strings in between, but only for its own exact class:
    // what a class derived from it returns from format() is what is written.
    virtual void appendEntry(const ILogEntry* entry, std::u16string& text);
    io::Writer* getWriter() const noexcept { return m_writer.get(); }

    // All units of text, NULs included.
    static void appendText(const String& text, std::u16string& to);
    // value->toString(), nothing for a null value. Strings and the boxed
    // 32-bit integers are copied without making a String.
    static void appendValue(const Object* value, std::u16string& to);
    // entry->visitFields() with visit(const String& name, const Object* value)
    // called for each field.
    template <class Visit>
    static void forEachField(const ILogEntry* entry, Visit&& visit)
    {
        class Adapter final : public ILogEntry::FieldVisitor {
        public:
            explicit Adapter(Visit& visit) noexcept : m_visit(visit) {}
            void visit(const String& name, const Object* value) override { m_visit(name, value); }

        private:
            Visit& m_visit;
        };
        Adapter adapter(visit);
        entry->visitFields(adapter);
    }

private:
    Reference<io::Writer> m_writer;
    // Reused from entry to entry: one allocation for the first entries
    // instead of several for every entry.
    std::u16string m_text;
};

} // namespace log
} // namespace qv

#endif
