#ifndef QV_EXEC_IRUNNABLE_H
#define QV_EXEC_IRUNNABLE_H

#include <qv/core/IQVUnknown.h>

namespace qv {
namespace exec {

// The work a Thread runs. Whatever run() throws is caught on the thread (see
// Thread); it never reaches the creator.
class IRunnable : public IQVUnknown {
public:
    static constexpr GUID iid = {0x52B2B99D, 0xE989, 0x4542, {0x95, 0x33, 0x0E, 0xE9, 0xFC, 0xDC, 0x69, 0xF3}};

    virtual void run() = 0;

protected:
    ~IRunnable() = default;
};

} // namespace exec
} // namespace qv

#endif
