#include <qv/log/BasicLogWriter.h>

namespace qv {
namespace log {

BasicLogWriter::BasicLogWriter(io::Writer* writer) : AbstractLogWriter(writer) {}

BasicLogWriter::~BasicLogWriter() noexcept(false) = default;

Reference<ILogProcessor> BasicLogWriter::create(io::Writer* writer)
{
    return Reference<ILogProcessor>(static_cast<ILogProcessor*>(new BasicLogWriter(writer)));
}

String BasicLogWriter::format(const ILogEntry* entry)
{
    String text;
    const Reference<const collections::Set<String>> names = entry->getFieldNames();
    for (const String& name : *names) {
        const Reference<const Object> value = entry->getField(name);
        text.append(name);
        text.append(u'=');
        if (value)
            text.append(value->toString());
        text.append(u'\n');
    }
    text.append(u"-------------------------\n");
    return text;
}

} // namespace log
} // namespace qv
