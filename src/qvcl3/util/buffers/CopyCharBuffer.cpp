#include <qv/core/Boundary.h>
#include <qv/util/ICharBuffer.h>

#include <cstring>

using qv::Result;
namespace results = qv::results;

namespace {

// Gives back the locks this call took, then throws the failing code: a
// failure must never leave a thread-safe buffer locked.
[[noreturn]] void fail(Result code, qv::util::ICharBuffer* writeLocked, qv::util::ICharBuffer* readLocked)
{
    if (readLocked != nullptr) {
        readLocked->ReleaseReadLock();
    }
    if (writeLocked != nullptr) {
        writeLocked->ReleaseWriteLock(-1);
    }
    throw qv::ResultException(code);
}

} // namespace

extern "C" Result QVCopyCharBuffer(qv::util::ICharBuffer* target, qv::util::ICharBuffer* source)
{
    if (!target || !source) {
        return results::INVALIDARG;
    }
    // The same buffer would wait for its own read lock while holding its
    // write lock.
    if (target == source) {
        return results::OK;
    }
    int32_t n = source->GetLength();
    (void)target->GetLength();
    char16_t* dst = nullptr;
    Result r = target->GetWriteLock(n, &dst);
    if (r < 0) {
        fail(r, nullptr, nullptr);
    }
    const char16_t* src = nullptr;
    r = source->GetReadLock(&src);
    if (r < 0) {
        fail(r, target, nullptr);
    }
    // A thread-safe source may have changed between the length and the lock;
    // what counts is its length under the lock.
    const int32_t locked = source->GetLength();
    if (locked > n) {
        r = target->EnsureCapacity(locked, &dst);
        if (r < 0) {
            fail(r, target, source);
        }
    }
    n = locked;
    if (n > 0) {
        std::memcpy(dst, src, static_cast<size_t>(n) * sizeof(char16_t));
    }
    r = source->ReleaseReadLock();
    if (r < 0) {
        fail(r, target, nullptr);
    }
    r = target->ReleaseWriteLock(n);
    qv::qvcom::throwIfFailed(r);
    return r;
}
