#include <qv/core/Boundary.h>
#include <qv/util/ICharBuffer.h>

#include <cstring>

using qv::Result;
namespace results = qv::results;

namespace {

// Kept as the function always behaved: the failing code travels as a
// ResultException and nothing is released on the way out, so a caller that
// catches it gives back whatever lock it knows to be held.
void throwIfFailing(Result code)
{
    if (code < 0) {
        throw qv::ResultException(code);
    }
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
    const int32_t n = source->GetLength();
    (void)target->GetLength();
    char16_t* dst = nullptr;
    throwIfFailing(target->GetWriteLock(n, &dst));
    const char16_t* src = nullptr;
    throwIfFailing(source->GetReadLock(&src));
    if (n > 0) {
        std::memcpy(dst, src, static_cast<size_t>(n) * sizeof(char16_t));
    }
    throwIfFailing(source->ReleaseReadLock());
    const Result result = target->ReleaseWriteLock(n);
    throwIfFailing(result);
    return result;
}
