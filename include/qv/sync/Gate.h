#ifndef QV_SYNC_GATE_H
#define QV_SYNC_GATE_H

#include <qv/sync/Object.h>
#include <qvcore3/qvcore3.h>

namespace qv {
namespace sync {

// Lets every waiter through while open; created closed.
class QV_EXPORT Gate : public Object {
public:
    explicit Gate(const char* name = nullptr, unsigned flags = 0);
    ~Gate() noexcept(false) override;
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    void wait() override;
    bool tryWait() override;
    // True only when the gate opened within ms; false on time-out.
    virtual bool wait(unsigned long ms);
    virtual void open();
    virtual void close();

private:
    QVHANDLE m_handle;
};

} // namespace sync
} // namespace qv

#endif
