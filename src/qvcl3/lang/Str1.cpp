#include <qv/lang/Str1.h>

#include <qv/core/Exception.h>
#include <qvcore3/qvcore3.h>

#include <climits>
#include <cstring>

namespace qv {

namespace {

// The text of every Str1 that has not allocated: capacity 0, so it is never
// written to.
char16_t g_emptyText[1] = {0};

constexpr int32_t INVALID_LENGTH = -2;

// The length of text as given, or INVALID_LENGTH for a length below -1.
int32_t measure(const char16_t* text, int32_t length) noexcept
{
    if (length < -1)
        return INVALID_LENGTH;
    if (!text)
        return 0;
    return length == -1 ? QVStrLenW(text) : length;
}

inline char16_t fold(char16_t unit, bool ignoreCase) noexcept
{
    return ignoreCase ? QVToLowerW(unit) : unit;
}

void copyUnits(char16_t* to, const char16_t* from, int32_t count) noexcept
{
    if (count > 0)
        std::memmove(to, from, static_cast<size_t>(count) * sizeof(char16_t));
}

} // namespace

Str1::Str1() noexcept : m_data(g_emptyText), m_length(0), m_capacity(0), m_fixed(false) {}

Str1::Str1(char16_t* storage, int32_t capacity) noexcept
    : m_data(storage), m_length(0), m_capacity(capacity), m_fixed(true)
{}

Str1::Str1(const char16_t* text, int32_t length) : Str1()
{
    check(assign(text, length));
}

Str1::Str1(const Str1& other) : Str1()
{
    check(assign(other));
}

Str1::Str1(Str1&& other) : Str1()
{
    if (other.m_fixed) {
        check(assign(other));
        return;
    }
    m_data = other.m_data;
    m_length = other.m_length;
    m_capacity = other.m_capacity;
    other.m_data = g_emptyText;
    other.m_length = 0;
    other.m_capacity = 0;
}

Str1::~Str1()
{
    if (!m_fixed && m_capacity > 0)
        QVMemFree(m_data);
}

Str1& Str1::operator=(const Str1& other)
{
    check(assign(other));
    return *this;
}

Str1& Str1::operator=(Str1&& other)
{
    if (this == &other)
        return *this;
    if (m_fixed || other.m_fixed) {
        check(assign(other));
        return *this;
    }
    if (m_capacity > 0)
        QVMemFree(m_data);
    m_data = other.m_data;
    m_length = other.m_length;
    m_capacity = other.m_capacity;
    other.m_data = g_emptyText;
    other.m_length = 0;
    other.m_capacity = 0;
    return *this;
}

Str1& Str1::operator=(const char16_t* text)
{
    check(assign(text));
    return *this;
}

void Str1::check(Result code)
{
    if (code >= 0)
        return;
    if (code == results::OUTOFMEMORY)
        throw OutOfMemoryException();
    throw ResultException(code);
}

Result Str1::replaceRange(int32_t start, const char16_t* text, int32_t length) noexcept
{
    if (length > INT32_MAX - 16 - start)
        return results::OUTOFMEMORY;
    const int32_t needed = start + length;
    if (needed > m_capacity) {
        if (m_fixed)
            return results::BUFFER_TOO_SMALL;
        const int32_t capacity = (needed + 15) & ~15;
        char16_t* block = static_cast<char16_t*>(QVMemAlloc((static_cast<size_t>(capacity) + 1) * sizeof(char16_t)));
        if (!block)
            return results::OUTOFMEMORY;
        // A fresh block, so text may point into the old one.
        copyUnits(block, m_data, start);
        copyUnits(block + start, text, length);
        block[needed] = 0;
        if (m_capacity > 0)
            QVMemFree(m_data);
        m_data = block;
        m_capacity = capacity;
        m_length = needed;
        return results::OK;
    }
    copyUnits(m_data + start, text, length);
    m_length = needed;
    if (m_capacity > 0)
        m_data[needed] = 0;
    return results::OK;
}

Result Str1::assign(const Str1& other) noexcept
{
    if (&other == this)
        return results::OK;
    return replaceRange(0, other.m_data, other.m_length);
}

Result Str1::assign(const char16_t* text, int32_t length) noexcept
{
    const int32_t count = measure(text, length);
    if (count == INVALID_LENGTH)
        return results::INVALIDARG;
    return replaceRange(0, text, count);
}

Result Str1::append(const Str1& other) noexcept
{
    return replaceRange(m_length, other.m_data, other.m_length);
}

Result Str1::append(const char16_t* text, int32_t length) noexcept
{
    const int32_t count = measure(text, length);
    if (count == INVALID_LENGTH)
        return results::INVALIDARG;
    return replaceRange(m_length, text, count);
}

Result Str1::append(char16_t unit) noexcept
{
    return replaceRange(m_length, &unit, 1);
}

Result Str1::reserve(int32_t capacity) noexcept
{
    if (capacity < 0)
        return results::INVALIDARG;
    if (capacity <= m_capacity)
        return results::OK;
    if (m_fixed)
        return results::BUFFER_TOO_SMALL;
    if (capacity > INT32_MAX - 16)
        return results::OUTOFMEMORY;
    const int32_t rounded = (capacity + 15) & ~15;
    char16_t* block = static_cast<char16_t*>(QVMemAlloc((static_cast<size_t>(rounded) + 1) * sizeof(char16_t)));
    if (!block)
        return results::OUTOFMEMORY;
    copyUnits(block, m_data, m_length);
    block[m_length] = 0;
    if (m_capacity > 0)
        QVMemFree(m_data);
    m_data = block;
    m_capacity = rounded;
    return results::OK;
}

void Str1::clear() noexcept
{
    m_length = 0;
    if (m_capacity > 0)
        m_data[0] = 0;
}

Str1& Str1::toLower() noexcept
{
    for (int32_t i = 0; i < m_length; ++i)
        m_data[i] = QVToLowerW(m_data[i]);
    return *this;
}

Str1& Str1::toUpper() noexcept
{
    for (int32_t i = 0; i < m_length; ++i)
        m_data[i] = QVToUpperW(m_data[i]);
    return *this;
}

int32_t Str1::compare(const char16_t* text, int32_t length, bool ignoreCase) const noexcept
{
    int32_t count = measure(text, length);
    if (count == INVALID_LENGTH)
        count = 0;
    const int32_t common = m_length < count ? m_length : count;
    for (int32_t i = 0; i < common; ++i) {
        const char16_t a = fold(m_data[i], ignoreCase);
        const char16_t b = fold(text[i], ignoreCase);
        if (a != b)
            return a < b ? -1 : 1;
    }
    if (m_length == count)
        return 0;
    return m_length < count ? -1 : 1;
}

int32_t Str1::compare(const Str1& other, bool ignoreCase) const noexcept
{
    return compare(other.m_data, other.m_length, ignoreCase);
}

bool Str1::equals(const Str1& other, bool ignoreCase) const noexcept
{
    return m_length == other.m_length && compare(other.m_data, other.m_length, ignoreCase) == 0;
}

bool Str1::equals(const char16_t* text, bool ignoreCase) const noexcept
{
    return compare(text, -1, ignoreCase) == 0;
}

bool Str1::equals(const char16_t* text, int32_t length, bool ignoreCase) const noexcept
{
    return measure(text, length) == m_length && compare(text, length, ignoreCase) == 0;
}

uint32_t Str1::hashOf(const char16_t* text, int32_t length, bool ignoreCase) noexcept
{
    const int32_t count = measure(text, length);
    uint32_t hash = 0;
    for (int32_t i = 0; i < count; ++i)
        hash = 31u * hash + fold(text[i], ignoreCase);
    return hash;
}

uint32_t Str1::hashCode(bool ignoreCase) const noexcept
{
    return hashOf(m_data, m_length, ignoreCase);
}

} // namespace qv
