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
    String text(u"  <entry>\n");
    const Reference<const collections::Set<String>> names = entry->getFieldNames();
    for (const String& name : *names) {
        const Reference<const Object> value = entry->getField(name);
        const int32_t space = name.indexOf(u' ');
        const String tag = space < 0 ? name : name.substring(0, space);
        const String valueText = value ? value->toString() : String();
        String line;
        line.format(String(u"    <{0}> {1} </{2}>"), name, valueText, tag);
        text.append(line);
        text.append(u'\n');
    }
    text.append(u"  </entry>\n");
    return text;
}

} // namespace log
} // namespace qv
