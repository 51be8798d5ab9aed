#ifndef QVCL3_COLLECTIONS_QVCOM_DEFAULTCOMPARISON_H
#define QVCL3_COLLECTIONS_QVCOM_DEFAULTCOMPARISON_H

#include "core/ObjectCast.h"

#include <qv/collections/qvcom/IQVComparator.h>
#include <qv/core/Boundary.h>
#include <qv/core/IQVUnknown.h>
#include <qv/core/Result.h>

#include <cstdint>

namespace qv {
namespace collections {
namespace qvcom {

// The object's identity: its IQVUnknown face as QueryInterface gives it.
const void* identityOf(const IQVUnknown* element) noexcept;

// What DefaultComparator's HashCode and Equals do, inline so that a map
// keyed by the default comparator (most are) hashes and compares its keys
// without two calls through the comparator object on every lookup.
inline Result defaultHashCode(const IQVUnknown* element, uint32_t* result) noexcept
{
    *result = 0;
    if (!element)
        return results::OK;
    // An Object is asked through its own virtual table: the same HashCode
    // (a subclass's override included) without the face and the reference
    // that holds it.
    if (const Object* object = ::qv::qvcom::objectOf(element))
        return object->HashCode(result);
    ::qv::qvcom::ComparableFace comparable(element);
    if (comparable)
        return comparable->HashCode(result);
    *result = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(identityOf(element)));
    return results::OK;
}

inline Result defaultEquals(const IQVUnknown* a, const IQVUnknown* b, bool* result) noexcept
{
    *result = a == b;
    if (a == b || !a || !b)
        return results::OK;
    ::qv::qvcom::ComparableFace comparable(a);
    if (comparable) {
        int order = 0;
        const Result code = comparable->CompareTo(b, &order);
        if (code < 0)
            return code;
        *result = order == 0;
        return results::OK;
    }
    *result = identityOf(a) == identityOf(b);
    return results::OK;
}

// An element's hash under a collection's comparator, the default one done
// inline; a failure is thrown as the collections throw it.
inline uint32_t hashUnder(const IQVComparator* comparator, bool isDefault, const IQVUnknown* element)
{
    uint32_t hash = 0;
    ::qv::qvcom::throwIfFailed(isDefault ? defaultHashCode(element, &hash) : comparator->HashCode(element, &hash));
    return hash;
}

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
