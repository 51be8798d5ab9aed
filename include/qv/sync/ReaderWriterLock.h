#ifndef QV_SYNC_READERWRITERLOCK_H
#define QV_SYNC_READERWRITERLOCK_H

#include <qv/sync/LockObject.h>
#include <qvcore3/qvcore3.h>

namespace qv {
namespace sync {

// wait/tryWait/signal are the exclusive side; the shared side has its own
// three. signal() also ends a shared hold, which the thread-safe buffers rely
// on.
class QV_EXPORT ReaderWriterLock : public LockObject {
public:
    explicit ReaderWriterLock(const char* name = nullptr, unsigned flags = 0);
    ~ReaderWriterLock() noexcept(false) override;
    ReaderWriterLock(const ReaderWriterLock&) = delete;
    ReaderWriterLock& operator=(const ReaderWriterLock&) = delete;

    void wait() override;
    bool tryWait() override;
    void signal() override;
    virtual void waitShared();
    virtual bool tryWaitShared();
    virtual void signalShared();

private:
    QVHANDLE m_handle;
};

} // namespace sync
} // namespace qv

#endif
