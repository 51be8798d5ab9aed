#ifndef QVCL3_UTIL_INIFILELOCKHOLD_H
#define QVCL3_UTIL_INIFILELOCKHOLD_H

#include <qv/core/Reference.h>
#include <qv/ipc/Semaphore.h>

namespace qv {
namespace util {

// Holds an INI file's named lock (when it has one) for a scope, with a
// reference of its own, so the lock outlives the operation whatever happens
// to the file object meanwhile.
class IniFileLockHold {
public:
    explicit IniFileLockHold(const Reference<ipc::Semaphore>& lock) : m_lock(lock)
    {
        if (m_lock)
            m_lock->wait();
    }
    IniFileLockHold(const IniFileLockHold&) = delete;
    IniFileLockHold& operator=(const IniFileLockHold&) = delete;
    // A failing post is reported like any platform failure.
    ~IniFileLockHold() noexcept(false)
    {
        if (m_lock)
            m_lock->signal();
    }

private:
    Reference<ipc::Semaphore> m_lock;
};

} // namespace util
} // namespace qv

#endif
