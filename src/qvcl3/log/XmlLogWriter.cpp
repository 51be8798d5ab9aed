#include <qv/log/XmlLogWriter.h>

namespace qv {
namespace log {

XmlLogWriter::XmlLogWriter(io::Writer* writer) : AbstractLogWriter(writer)
{
    getWriter()->write(String(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"));
    getWriter()->write(String(u"<log>\n"));
}

XmlLogWriter::~XmlLogWriter() noexcept(false)
{
    getWriter()->write(String(u"</log>\n"));
    getWriter()->flush();
}

Reference<ILogProcessor> XmlLogWriter::create(io::Writer* writer)
{
    return Reference<ILogProcessor>(static_cast<ILogProcessor*>(new XmlLogWriter(writer)));
}

String XmlLogWriter::format(const ILogEntry* entry)
{
    std::u16string text;
    appendEntry(entry, text);
    return String(text.data(), static_cast<int32_t>(text.size()));
}

// "    <name> value </tag>" per field, the closing tag being the name up to
// its first space (a name with attributes), nothing escaped.
void XmlLogWriter::appendEntry(const ILogEntry* entry, std::u16string& text)
{
    text.append(u"  <entry>\n");
    const Reference<const collections::Set<String>> names = entry->getFieldNames();
    for (const String& name : *names) {
        const int32_t space = name.indexOf(u' ');
        text.append(u"    <");
        appendText(name, text);
        text.append(u"> ");
        appendValue(entry->getField(name).get(), text);
        text.append(u" </");
        text.append(name.getData(), static_cast<size_t>(space < 0 ? name.getLength() : space));
        text.append(u">\n");
    }
    text.append(u"  </entry>\n");
}

} // namespace log
} // namespace qv
