#ifndef QV_SYNC_CONDITION_H
#define QV_SYNC_CONDITION_H

#include <qv/core/Object.h>
#include <qvcore3/qvcore3.h>

namespace qv {
namespace sync {

// A condition variable with its own lock. Not a sync::Object: its operations
// are not virtual.
class QV_EXPORT Condition : public qv::Object {
public:
    // Holds the condition's lock for a scope.
    class QV_EXPORT Holder {
    public:
        explicit Holder(Condition& condition);
        ~Holder() noexcept(false);
        Holder(const Holder&) = delete;
        Holder& operator=(const Holder&) = delete;

    private:
        Condition* m_condition;
    };

    explicit Condition(const char* name = nullptr, unsigned flags = 0);
    // Ignores the platform's answer to destroying the condition.
    ~Condition() override;
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    void acquire();
    void release();
    // Releases the lock while waiting and holds it again on return.
    void wait();
    // Throws ResultException on every failure, the time-out (0x800705B4)
    // included: unlike Event and Gate, a timed condition wait reports its
    // time-out by throwing, kept as is.
    void wait(unsigned long ms);
    void signal();
    void broadcast();

private:
    QVHANDLE m_handle;
};

} // namespace sync
} // namespace qv

#endif
