#ifndef QV_CORE_MODULE_H
#define QV_CORE_MODULE_H

#include <qv/core/Export.h>

#include <atomic>
#include <cstdint>

namespace qv {
namespace qvcom {

// The unit that owns component classes. Its lock count is the number of live
// referenced objects and server locks keeping it loaded: component objects
// raise it on their first reference and lower it on their last release.
class QV_EXPORT Module {
public:
    Module() noexcept = default;
    virtual ~Module();
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    int32_t Lock() noexcept { return m_lockCount.fetch_add(1, std::memory_order_relaxed) + 1; }
    int32_t Unlock() noexcept { return m_lockCount.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    int32_t GetLockCount() const noexcept { return m_lockCount.load(std::memory_order_acquire); }
    // 0 (may unload) exactly when nothing holds the module, 1 otherwise.
    int32_t CanUnloadNow() const noexcept { return GetLockCount() == 0 ? 0 : 1; }

private:
    std::atomic<int32_t> m_lockCount{0};
};

} // namespace qvcom
} // namespace qv

#endif
