#ifndef QV_LOG_XMLLOGWRITER_H
#define QV_LOG_XMLLOGWRITER_H

#include <qv/log/AbstractLogWriter.h>

namespace qv {
namespace log {

// An XML document: the declaration and "<log>" when constructed, one
// <entry> element per entry with one element per field, "</log>" when
// destroyed (only then is the document complete). A field name may carry
// attributes ("field unit=ms" opens with the whole name and closes with
// "field"). Nothing is escaped: markup in names or values goes into the
// document as it is, which callers that log such text must keep in mind.
class QV_EXPORT XmlLogWriter : public AbstractLogWriter {
public:
    explicit XmlLogWriter(io::Writer* writer);
    // Writes "</log>" and flushes; the writer's errors pass out.
    ~XmlLogWriter() noexcept(false) override;

    static Reference<ILogProcessor> create(io::Writer* writer);

protected:
    String format(const ILogEntry* entry) override;
    void appendEntry(const ILogEntry* entry, std::u16string& text) override;

private:
    static void appendElement(const ILogEntry* entry, std::u16string& text);
};

} // namespace log
} // namespace qv

#endif
