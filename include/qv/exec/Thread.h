#ifndef QV_EXEC_THREAD_H
#define QV_EXEC_THREAD_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/exec/IRunnable.h>
#include <qv/lang/String.h>

#include <cstdint>

namespace qv {
namespace exec {

// A thread of this process running an IRunnable. Not started -> started
// (start) -> joined (join; the object can then be started again), or
// detached by the destructor. Driven by one controlling thread; no locks.
//
// The new thread holds its own reference to the runnable from start() until
// run() has returned, so a detached thread may outlive this object. join()
// returns null when run() returned; when an exception left run(), the thread
// writes one line about it to standard error and join() returns the
// exception's result code as a pointer-sized integer (see resultCode()).
class QV_EXPORT Thread : public Object {
public:
    explicit Thread(IRunnable* runnable = nullptr);
    Thread(IRunnable* runnable, const String& name);
    // Copies the runnable, the name and the stack size; the copy is not
    // started, whatever the state of the original.
    Thread(const Thread& other);
    Thread& operator=(const Thread&) = delete;
    // Detaches a thread still attached; throws ResultException when the
    // platform refuses.
    ~Thread() noexcept(false) override;

    Object* clone() const override;

    // IllegalStateException "thread already started" while a thread is
    // attached; ResultException "thread creation failed" when the platform
    // fails (OutOfMemoryException when it ran out of memory).
    void start();
    // Waits for the thread to end and returns its result. IllegalStateException
    // "thread not started" when none is attached; ResultException
    // "thread join failed" (joining itself, for one).
    void* join();
    // The system id of the attached thread; 0 when none.
    uint32_t getID() const noexcept { return m_id; }
    const String& getName() const noexcept { return m_name; }
    // Takes effect at the next start(); 0 is the platform's default. Smaller
    // sizes are raised to the system minimum.
    void setStackSize(uint32_t bytes) noexcept { m_stackSize = bytes; }
    uint32_t getStackSize() const noexcept { return m_stackSize; }

    // The kernel's id of the calling thread (gettid), as getID reports it.
    static uint32_t getCurrentID() noexcept;
    static void sleep(uint32_t milliseconds) noexcept;
    // The result code carried by a join result: 0 for null (run() returned),
    // otherwise the code of the exception that left run().
    static Result resultCode(void* joinResult) noexcept;

private:
    void checkNotStarted() const;
    void checkStarted() const;
    static void* threadWrapper(void* runnable);

    Reference<IRunnable> m_runnable;
    String m_name;
    uint32_t m_stackSize = 0;
    int32_t m_handle = -1;
    uint32_t m_id = 0;
};

} // namespace exec
} // namespace qv

#endif
