#include "io/FileError.h"

#include <qv/io/IoException.h>

#include <qvcore3/qvcore3.h>

#include <string>

namespace qv {
namespace io {
namespace detail {

void throwFileError(const char16_t* what, const String& name, Result code)
{
    char text[256];
    QVResultGetText(code, text, sizeof text);
    std::u16string message(what);
    message += u": ";
    message += name.toU16String();
    message += u": ";
    message += String(text).toU16String();
    throw IoException(String(message));
}

String handleName(int32_t handle)
{
    const std::string text = "handle " + std::to_string(handle);
    return String(std::u16string(text.begin(), text.end()));
}

} // namespace detail
} // namespace io
} // namespace qv
