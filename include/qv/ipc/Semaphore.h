#ifndef QV_IPC_SEMAPHORE_H
#define QV_IPC_SEMAPHORE_H

#include <qv/sync/Semaphore.h>

namespace qv {
namespace ipc {

// A counting semaphore shared between processes by name. The name is a plain
// word (no '/' inside, at most 240 characters); the first process to open it
// creates it with initialCount, later ones open it as it is. It lives in the
// system until unlink() removes the name (processes that have it open keep
// using it). Waiting, signalling and reading the count work as for an
// unnamed sync::Semaphore; only opening and closing differ.
class QV_EXPORT Semaphore : public sync::Semaphore {
public:
    // ResultException with the platform's code when the name is refused or
    // the semaphore cannot be opened.
    Semaphore(const char* name, unsigned long initialCount);
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;
    // Throws ResultException when the platform fails to close it.
    ~Semaphore() noexcept(false) override;

    // Removes the name; ResultException 0x80070002 when there is none.
    static void unlink(const char* name);
};

} // namespace ipc
} // namespace qv

#endif
