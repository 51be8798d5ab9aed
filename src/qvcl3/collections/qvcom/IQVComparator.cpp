#include <qv/collections/qvcom/IQVComparator.h>

#include "collections/qvcom/DefaultComparison.h"
#include "core/ObjectCast.h"

#include <qv/core/Boundary.h>
#include <qv/core/Reference.h>
#include <qv/lang/String.h>

#include <new>

namespace qv {
namespace collections {
namespace qvcom {

using ::qv::qvcom::ComparableFace;

const void* identityOf(const IQVUnknown* element) noexcept
{
    void* unknown = nullptr;
    if (const_cast<IQVUnknown*>(element)->QueryInterface(IQVUnknown::iid, &unknown) < 0 || !unknown)
        return element;
    static_cast<IQVUnknown*>(unknown)->Release();
    return unknown;
}

namespace {

const String* stringOf(const IQVUnknown* element)
{
    const String* text = dynamic_cast<const String*>(element);
    if (!text)
        throw ResultException(results::INVALIDARG,
                              QV_STR(u"the string comparator was given an element that is not a String"));
    return text;
}

// A comparator lives for the whole process, in static storage that is never
// destroyed, with one reference taken for good: collections released during
// static destruction may still drop theirs, and nothing needs allocating.
template <class T>
T* keepForever(T* comparator) noexcept
{
    comparator->AddRef();
    return comparator;
}

} // namespace

QV_BEGIN_INTERFACE_MAP(DefaultComparator)
QV_INTERFACE_ENTRY(DefaultComparator, IQVComparator)
QV_END_INTERFACE_MAP()

DefaultComparator::~DefaultComparator() = default;

Result DefaultComparator::HashCode(const IQVUnknown* element, uint32_t* result) const
{
    if (!result)
        return results::POINTER;
    return defaultHashCode(element, result);
}

Result DefaultComparator::Equals(const IQVUnknown* a, const IQVUnknown* b, bool* result) const
{
    if (!result)
        return results::POINTER;
    return defaultEquals(a, b, result);
}

const IQVComparator* GetDefaultComparator() noexcept
{
    alignas(DefaultComparator) static unsigned char storage[sizeof(DefaultComparator)];
    static DefaultComparator* const instance = keepForever(new (storage) DefaultComparator());
    return instance;
}

QV_BEGIN_INTERFACE_MAP(StringComparator)
QV_INTERFACE_ENTRY(StringComparator, IQVComparator)
QV_END_INTERFACE_MAP()

StringComparator::~StringComparator() = default;

Result StringComparator::HashCode(const IQVUnknown* element, uint32_t* result) const
{
    if (!result)
        return results::POINTER;
    *result = 0;
    return ::qv::qvcom::guardBoundary([&] {
        if (element)
            *result = stringOf(element)->hashCode(m_ignoreCase);
    });
}

Result StringComparator::Equals(const IQVUnknown* a, const IQVUnknown* b, bool* result) const
{
    if (!result)
        return results::POINTER;
    *result = false;
    return ::qv::qvcom::guardBoundary([&] {
        if (!a || !b) {
            *result = a == b;
            return;
        }
        const String* left = stringOf(a);
        const String* right = stringOf(b);
        *result = left == right || left->equals(*right, m_ignoreCase);
    });
}

const IQVComparator* GetStringComparator(bool ignoreCase) noexcept
{
    alignas(StringComparator) static unsigned char exactStorage[sizeof(StringComparator)];
    alignas(StringComparator) static unsigned char foldedStorage[sizeof(StringComparator)];
    static StringComparator* const exact = keepForever(new (exactStorage) StringComparator(false));
    static StringComparator* const folded = keepForever(new (foldedStorage) StringComparator(true));
    return ignoreCase ? folded : exact;
}

QV_BEGIN_INTERFACE_MAP(NaturalOrdering)
QV_INTERFACE_ENTRY(NaturalOrdering, IQVOrdering)
QV_END_INTERFACE_MAP()

NaturalOrdering::~NaturalOrdering() = default;

Result NaturalOrdering::Compare(const IQVUnknown* a, const IQVUnknown* b, int32_t* order) const
{
    if (!order)
        return results::POINTER;
    *order = 0;
    if (!a || !b) {
        *order = a ? 1 : (b ? -1 : 0);
        return results::OK;
    }
    ComparableFace comparable(a);
    if (!comparable)
        return results::NOINTERFACE;
    int result = 0;
    const Result code = comparable->CompareTo(b, &result);
    if (code >= 0)
        *order = result;
    return code;
}

const IQVOrdering* GetNaturalOrdering() noexcept
{
    alignas(NaturalOrdering) static unsigned char storage[sizeof(NaturalOrdering)];
    static NaturalOrdering* const ordering = keepForever(new (storage) NaturalOrdering());
    return ordering;
}

} // namespace qvcom
} // namespace collections
} // namespace qv
