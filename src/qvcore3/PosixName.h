#ifndef QVCORE3_SRC_POSIXNAME_H
#define QVCORE3_SRC_POSIXNAME_H

#include <qvcore3/qvcore3.h>

#include <cstddef>

namespace qvcore3 {

// Names of named semaphores and shared memory: "/" is put in front when
// missing; no other '/' is allowed; at most kPosixNameMax characters after it.
constexpr size_t kPosixNameMax = 240;
struct PosixName {
    char text[kPosixNameMax + 2];
};
QVRESULT MakePosixName(const char* name, PosixName* out) noexcept;

} // namespace qvcore3

#endif
