#include "PosixName.h"

#include <cstring>

namespace qvcore3 {

QVRESULT MakePosixName(const char* name, PosixName* out) noexcept
{
    if (!name) {
        return QV_E_POINTER;
    }
    if (*name == '/') {
        ++name;
    }
    const size_t length = std::strlen(name);
    if (length == 0 || length > kPosixNameMax || std::strchr(name, '/') != nullptr || std::strcmp(name, ".") == 0 ||
        std::strcmp(name, "..") == 0) {
        return QV_E_INVALIDARG;
    }
    out->text[0] = '/';
    std::memcpy(out->text + 1, name, length + 1);
    return QV_S_OK;
}

} // namespace qvcore3
