#include <qv/i18n/BundleFormatException.h>

namespace qv {
namespace i18n {

namespace {

// "messages_de.properties:3: bad \uXXXX escape" or
// "messages_de.properties: byte offset 17: invalid UTF-8".
String describe(const String& file, int32_t line, int64_t offset, const String& problem)
{
    String message(file);
    if (line >= 0)
        message.append(u':').append(String::valueOf(line));
    message.append(u": ");
    if (offset >= 0)
        message.append(u"byte offset ").append(String::valueOf(static_cast<long long>(offset))).append(u": ");
    return message.append(problem);
}

} // namespace

BundleFormatException::BundleFormatException() : m_line(-1), m_offset(-1) {}

BundleFormatException::BundleFormatException(const String& file, int32_t line, int64_t offset, const String& problem)
    : Exception(describe(file, line, offset, problem)), m_file(file), m_line(line), m_offset(offset)
{}

BundleFormatException::BundleFormatException(const BundleFormatException& other) = default;

BundleFormatException& BundleFormatException::operator=(const BundleFormatException& other) = default;

BundleFormatException::~BundleFormatException() = default;

String BundleFormatException::getFileName() const
{
    return m_file;
}

int32_t BundleFormatException::getLine() const
{
    return m_line;
}

int64_t BundleFormatException::getOffset() const
{
    return m_offset;
}

Result BundleFormatException::getResult() const
{
    return static_cast<Result>(0x8007000Du);
}

} // namespace i18n
} // namespace qv
