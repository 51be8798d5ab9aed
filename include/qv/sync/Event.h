#ifndef QV_SYNC_EVENT_H
#define QV_SYNC_EVENT_H

#include <qv/sync/Object.h>
#include <qvcore3/qvcore3.h>

namespace qv {
namespace sync {

// Auto-reset event: each signal releases one wait.
class QV_EXPORT Event : public Object {
public:
    explicit Event(const char* name = nullptr, unsigned flags = 0);
    ~Event() noexcept(false) override;
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    void wait() override;
    // Always false and touches nothing: an event is not polled this way (kept
    // as is; poll with wait(0)).
    bool tryWait() override;
    // True only when signalled within ms; false on time-out.
    virtual bool wait(unsigned long ms);
    virtual void signal();

private:
    QVHANDLE m_handle;
};

} // namespace sync
} // namespace qv

#endif
