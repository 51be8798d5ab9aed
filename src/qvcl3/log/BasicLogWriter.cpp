#include <qv/log/BasicLogWriter.h>

#include <typeinfo>

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
    std::u16string text;
    appendLines(entry, text);
    return String(text.data(), static_cast<int32_t>(text.size()));
}

void BasicLogWriter::appendEntry(const ILogEntry* entry, std::u16string& text)
{
    // A subclass may override format(): what it returns is what gets written.
    if (typeid(*this) != typeid(BasicLogWriter))
        AbstractLogWriter::appendEntry(entry, text);
    else
        appendLines(entry, text);
}

void BasicLogWriter::appendLines(const ILogEntry* entry, std::u16string& text)
{
    forEachField(entry, [&text](const String& name, const Object* value) {
        appendText(name, text);
        text += u'=';
        appendValue(value, text);
        text += u'\n';
    });
    static constexpr char16_t rule[] = u"-------------------------\n";
    text.append(rule, sizeof rule / sizeof rule[0] - 1);
}

} // namespace log
} // namespace qv
