#include <qv/log/XmlLogWriter.h>

#include <exception>
#include <typeinfo>

namespace qv {
namespace log {

XmlLogWriter::XmlLogWriter(io::Writer* writer) : AbstractLogWriter(writer)
{
    getWriter()->write(String(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"));
    getWriter()->write(String(u"<log>\n"));
}

XmlLogWriter::~XmlLogWriter() noexcept(false)
{
    const auto close = [this] {
        getWriter()->write(String(u"</log>\n"));
        getWriter()->flush();
    };
    if (std::uncaught_exceptions() == 0) {
        close();
        return;
    }
    // Dropped while an exception (often the writer's own) unwinds the stack:
    // a second one would end the process, so the closing tag is written if
    // the writer still can, and its failure is not thrown.
    try {
        close();
    } catch (...) {
    }
}

Reference<ILogProcessor> XmlLogWriter::create(io::Writer* writer)
{
    return Reference<ILogProcessor>(static_cast<ILogProcessor*>(new XmlLogWriter(writer)));
}

String XmlLogWriter::format(const ILogEntry* entry)
{
    std::u16string text;
    appendElement(entry, text);
    return String(text.data(), static_cast<int32_t>(text.size()));
}

namespace {

// Each text of a line ends at its first NUL, as it always has: the line was
// once made by String::format, whose arguments are NUL-terminated.
size_t lengthToNul(const char16_t* text, size_t length)
{
    const char16_t* nul = std::char_traits<char16_t>::find(text, length, u'\0');
    return nul ? static_cast<size_t>(nul - text) : length;
}

} // namespace

void XmlLogWriter::appendEntry(const ILogEntry* entry, std::u16string& text)
{
    // A subclass may override format(): what it returns is what gets written.
    if (typeid(*this) != typeid(XmlLogWriter))
        AbstractLogWriter::appendEntry(entry, text);
    else
        appendElement(entry, text);
}

// "    <name> value </tag>" per field, the closing tag being the name up to
// its first space (a name with attributes), nothing escaped.
void XmlLogWriter::appendElement(const ILogEntry* entry, std::u16string& text)
{
    text.append(u"  <entry>\n");
    forEachField(entry, [&text](const String& name, const Object* value) {
        const char16_t* units = name.getData();
        const size_t nameLength = lengthToNul(units, static_cast<size_t>(name.getLength()));
        const int32_t space = name.indexOf(u' ');
        const size_t tagLength =
            space >= 0 && static_cast<size_t>(space) < nameLength ? static_cast<size_t>(space) : nameLength;
        text.append(u"    <");
        text.append(units, nameLength);
        text.append(u"> ");
        const size_t valueStart = text.size();
        appendValue(value, text);
        text.resize(valueStart + lengthToNul(text.data() + valueStart, text.size() - valueStart));
        text.append(u" </");
        text.append(units, tagLength);
        text.append(u">\n");
    });
    text.append(u"  </entry>\n");
}

} // namespace log
} // namespace qv
