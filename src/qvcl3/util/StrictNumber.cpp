#include "util/StrictNumber.h"

#include <cerrno>
#include <cstdlib>
#include <string>

namespace qv {
namespace util {
namespace detail {

namespace {

template <class T, class Convert>
bool convertWhole(const String& text, T& value, Convert convert)
{
    const std::string narrow = text.toUtf8();
    if (narrow.empty() || narrow[0] == ' ' || narrow[0] == '\t')
        return false;
    char* end = nullptr;
    errno = 0;
    const T converted = convert(narrow.c_str(), &end);
    if (*end != 0 || errno == ERANGE)
        return false;
    value = converted;
    return true;
}

} // namespace

bool parseStrict(const String& text, int64_t& value)
{
    return convertWhole(text, value, [](const char* s, char** end) { return std::strtoll(s, end, 10); });
}

bool parseStrict(const String& text, uint64_t& value)
{
    if (text.getLength() > 0 && text.getCharAt(0) == u'-')
        return false;
    return convertWhole(text, value, [](const char* s, char** end) { return std::strtoull(s, end, 10); });
}

bool parseStrict(const String& text, double& value)
{
    return convertWhole(text, value, [](const char* s, char** end) { return std::strtod(s, end); });
}

} // namespace detail
} // namespace util
} // namespace qv
