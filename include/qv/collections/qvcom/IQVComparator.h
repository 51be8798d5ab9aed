#ifndef QV_COLLECTIONS_QVCOM_IQVCOMPARATOR_H
#define QV_COLLECTIONS_QVCOM_IQVCOMPARATOR_H

#include <qv/core/ComObject.h>
#include <qv/core/Export.h>
#include <qv/core/IQVUnknown.h>

#include <cstdint>

namespace qv {
namespace collections {
namespace qvcom {

// Hashing and equality of collection elements, so that one table or list
// serves any element type. Either element may be null; a comparator that
// cannot judge an element returns a failure code (the collections throw it as
// ResultException and change nothing).
class IQVComparator : public IQVUnknown {
public:
    static constexpr GUID iid = {0xE6370493, 0x63AE, 0x40B9, {0x81, 0x7D, 0xBE, 0xF5, 0x43, 0xDD, 0xDB, 0x6A}};

    virtual Result HashCode(const IQVUnknown* element, uint32_t* result) const = 0;
    virtual Result Equals(const IQVUnknown* a, const IQVUnknown* b, bool* result) const = 0;

protected:
    ~IQVComparator() = default;
};

// Identity through IQVComparable where the element has it (equal when
// CompareTo gives 0, hash from HashCode), otherwise the element's address.
// Null hashes to 0 and equals only null.
class QV_EXPORT DefaultComparator final : public ComObject, public IQVComparator {
    QV_DECLARE_INTERFACE_MAP()

public:
    Result HashCode(const IQVUnknown* element, uint32_t* result) const override;
    Result Equals(const IQVUnknown* a, const IQVUnknown* b, bool* result) const override;

private:
    friend const IQVComparator* GetDefaultComparator() noexcept;
    DefaultComparator() noexcept = default;
    ~DefaultComparator() override;
};

// qv::String elements, with or without case. Null hashes to 0 and equals
// only null; any other element that is not a String gives 0x80070057.
class QV_EXPORT StringComparator final : public ComObject, public IQVComparator {
    QV_DECLARE_INTERFACE_MAP()

public:
    Result HashCode(const IQVUnknown* element, uint32_t* result) const override;
    Result Equals(const IQVUnknown* a, const IQVUnknown* b, bool* result) const override;
    bool isIgnoringCase() const noexcept { return m_ignoreCase; }

private:
    friend const IQVComparator* GetStringComparator(bool ignoreCase) noexcept;
    explicit StringComparator(bool ignoreCase) noexcept : m_ignoreCase(ignoreCase) {}
    ~StringComparator() override;

    bool m_ignoreCase;
};

// An order of collection elements, for sorting and searching: the
// comparators above only tell equal from unequal. Either element may be
// null. An ordering that cannot place an element returns a failure code
// (sort and search throw it as ResultException and leave the list as it was).
class IQVOrdering : public IQVUnknown {
public:
    static constexpr GUID iid = {0x27718418, 0xD927, 0x4077, {0xB4, 0xDB, 0xA4, 0xF2, 0xB5, 0xCB, 0x84, 0xBA}};

    // Negative, 0 or positive as a comes before, together with, or after b.
    virtual Result Compare(const IQVUnknown* a, const IQVUnknown* b, int32_t* order) const = 0;

protected:
    ~IQVOrdering() = default;
};

// The elements' own order: IQVComparable::CompareTo of the first element.
// Null comes before everything else; a non-null element without
// IQVComparable gives 0x80004002 (no such interface).
class QV_EXPORT NaturalOrdering final : public ComObject, public IQVOrdering {
    QV_DECLARE_INTERFACE_MAP()

public:
    Result Compare(const IQVUnknown* a, const IQVUnknown* b, int32_t* order) const override;

private:
    friend const IQVOrdering* GetNaturalOrdering() noexcept;
    NaturalOrdering() noexcept = default;
    ~NaturalOrdering() override;
};

// Process-wide instances; they live until the process ends, so holding or
// releasing references to them is always safe.
QV_EXPORT const IQVComparator* GetDefaultComparator() noexcept;
QV_EXPORT const IQVComparator* GetStringComparator(bool ignoreCase = false) noexcept;
QV_EXPORT const IQVOrdering* GetNaturalOrdering() noexcept;

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
