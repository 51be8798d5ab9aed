#include <qv/core/Boundary.h>
#include <qv/util/ICharBuffer.h>

#include <cstring>

using qv::Result;
namespace results = qv::results;

extern "C" Result QVCopyCharBuffer(qv::util::ICharBuffer* target, qv::util::ICharBuffer* source) noexcept
{
    if (!target || !source)
        return results::INVALIDARG;
    // The same buffer would wait for its own read lock while holding its
    // write lock.
    if (target == source)
        return results::OK;
    return qv::qvcom::guardBoundary([&]() -> Result {
        int32_t n = source->GetLength();
        (void)target->GetLength();
        char16_t* dst = nullptr;
        Result r = target->GetWriteLock(n, &dst);
        if (r < 0)
            return r;
        const char16_t* src = nullptr;
        r = source->GetReadLock(&src);
        if (r < 0) {
            target->ReleaseWriteLock(-1);
            return r;
        }
        // A thread-safe source may have changed between the length and the
        // lock; what counts is its length under the lock.
        int32_t locked = source->GetLength();
        if (locked > n) {
            r = target->EnsureCapacity(locked, &dst);
            if (r < 0) {
                source->ReleaseReadLock();
                target->ReleaseWriteLock(-1);
                return r;
            }
        }
        n = locked;
        if (n > 0)
            std::memcpy(dst, src, static_cast<size_t>(n) * sizeof(char16_t));
        r = source->ReleaseReadLock();
        if (r < 0) {
            target->ReleaseWriteLock(-1);
            return r;
        }
        return target->ReleaseWriteLock(n);
    });
}
