#ifndef QV_LOG_ABSTRACTLOGWRITER_H
#define QV_LOG_ABSTRACTLOGWRITER_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/io/Writer.h>
#include <qv/log/ILogProcessor.h>

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
    io::Writer* getWriter() const noexcept { return m_writer.get(); }

private:
    Reference<io::Writer> m_writer;
};

} // namespace log
} // namespace qv

#endif
