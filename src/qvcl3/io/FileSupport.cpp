#include "io/FileSupport.h"

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

void ensureOpen(int32_t handle)
{
    if (handle < 0)
        throw IoException(u"stream closed");
}

void closeHandle(int32_t& handle, bool owns, const String& name)
{
    if (handle < 0)
        return;
    const int32_t closing = handle;
    handle = -1;
    if (owns) {
        const Result result = QVFileClose(closing);
        if (failed(result))
            throwFileError(u"cannot close file", name, result);
    }
}

} // namespace detail
} // namespace io
} // namespace qv
