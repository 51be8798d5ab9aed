#ifndef QV_SYNC_SEMAPHORE_H
#define QV_SYNC_SEMAPHORE_H

#include <qv/sync/Object.h>
#include <qvcore3/qvcore3.h>

#include <cstdint>

namespace qv {
namespace sync {

class QV_EXPORT Semaphore : public Object {
public:
    explicit Semaphore(unsigned long initialCount = 0, const char* name = nullptr, unsigned flags = 0);
    ~Semaphore() noexcept(false) override;
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    void wait() override;
    bool tryWait() override;
    virtual void signal();
    virtual int32_t getValue();

protected:
    // For semaphores whose handle comes from elsewhere (named ones): the
    // subclass closes it itself, after taking it back with releaseHandle().
    struct AdoptHandle {};
    Semaphore(AdoptHandle, QVHANDLE handle) noexcept : m_handle(handle) {}
    QVHANDLE releaseHandle() noexcept
    {
        const QVHANDLE handle = m_handle;
        m_handle = QV_INVALID_HANDLE;
        return handle;
    }

private:
    QVHANDLE m_handle;
};

} // namespace sync
} // namespace qv

#endif
