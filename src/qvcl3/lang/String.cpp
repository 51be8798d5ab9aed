#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include "EmbeddedCharBuffer.h"
#include "UnitScratch.h"
#include "UtfArithmetic.h"
#include "core/RecycledBlocks.h"

#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <typeinfo>

namespace qv {

namespace {

typedef util::RWCharBuffer RW;

constexpr int32_t kMaxLength = detail::kMaxStringLength;

const char16_t kEmptyText[1] = {0};

// The buffer every empty String holds. Created once and never destroyed:
// Strings with static storage may still hold it while the process exits.
util::ICharBuffer* emptyBuffer() noexcept
{
    static util::ICharBuffer* const empty = [] {
        alignas(util::ROCharBuffer) static unsigned char storage[sizeof(util::ROCharBuffer)];
        util::ROCharBuffer* buffer = new (storage) util::ROCharBuffer(kEmptyText, 1);
        buffer->AddRef();
        return static_cast<util::ICharBuffer*>(buffer);
    }();
    return empty;
}

bool overlaps(const char16_t* run, int32_t count, const char16_t* data, int32_t units) noexcept
{
    if (!run || !data || count <= 0)
        return false;
    std::less<const char16_t*> before;
    return before(run, data + units) && before(data, run + count);
}

} // namespace

void* String::operator new(size_t size)
{
    return detail::allocateRecycled<String>(size);
}

void String::operator delete(void* block, size_t size) noexcept
{
    detail::releaseRecycled<String>(block, size);
}

String::String() noexcept
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    holdEmpty();
}

String::String(String&& other) noexcept
    : util::AbstractCharBuffer(), m_buffer(other.m_buffer), m_narrow(other.m_narrow), m_reserved(nullptr),
      m_own(other.m_own), m_exclusive(other.m_exclusive.load(std::memory_order_relaxed))
{
    other.m_narrow = nullptr;
    other.m_buffer = nullptr;
    other.holdEmpty();
}

String::String(const char16_t* text, int32_t length, int32_t capacity)
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    initText(ACQUIRE_COPY, text, length, capacity);
}

String::String(char16_t c, int32_t count, int32_t capacity)
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    if (count < 0)
        count = 0;
    if (count > kMaxLength)
        throw OutOfMemoryException();
    if (count < 1 && capacity < 1) {
        holdEmpty();
        return;
    }
    holdNew(nullptr, 0, count + 1 > capacity ? count + 1 : capacity);
    char16_t* data = const_cast<char16_t*>(m_own->RW::GetData());
    for (int32_t i = 0; i < count; ++i)
        data[i] = c;
    unlockAfterWrite(data, count);
}

String::String(int32_t capacity)
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    initText(ACQUIRE_COPY, nullptr, 0, capacity);
}

String::String(AcquireMode mode, const char16_t* text, int32_t length, int32_t capacity)
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    initText(mode, text, length, capacity);
}

String::String(AcquireMode mode, const String& source, int32_t begin, int32_t end, int32_t capacity)
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    initRegion(mode, source, begin, end, capacity);
}

// Copying is the general constructor's default mode.
String::String(util::ICharBuffer* buffer) : String(ACQUIRE_COPY, buffer) {}

String::String(AcquireMode mode, util::ICharBuffer* buffer)
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    if (!buffer) {
        holdEmpty();
        return;
    }
    switch (mode) {
    case ACQUIRE_SHARE:
        buffer->AddRef();
        hold(buffer, nullptr);
        break;
    case ACQUIRE_WRAP: holdWrap(buffer->GetData(), buffer->GetLength()); break;
    default: {
        const char16_t* units = nullptr;
        qvcom::throwIfFailed(buffer->GetReadLock(&units));
        try {
            initText(mode, units, buffer->GetLength(), 0);
        } catch (...) {
            buffer->ReleaseReadLock();
            throw;
        }
        Result r = buffer->ReleaseReadLock();
        if (r < 0) {
            m_buffer->Release();
            qvcom::throwIfFailed(r);
        }
    }
    }
}

String::String(const STRUCT_QV_STR_LIT_INFO& literal)
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    holdWrap(literal.text, literal.length);
}

String::String(const wchar_t* text, int32_t length)
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    if (!text || length == 0) {
        holdEmpty();
        return;
    }
    if (length < 0) {
        length = 0;
        while (text[length] != 0) {
            if (length >= kMaxLength / 2)
                throw OutOfMemoryException();
            ++length;
        }
    }
    if (length > kMaxLength / 2)
        throw OutOfMemoryException();
    auto isScalar = qvutf::isScalarValue;
    int32_t units = 0;
    for (int32_t i = 0; i < length; ++i) {
        uint32_t v = static_cast<uint32_t>(text[i]);
        units += (isScalar(v) && v > 0xFFFF) ? 2 : 1;
    }
    if (units == 0) {
        holdEmpty();
        return;
    }
    holdNew(nullptr, 0, units + 1);
    char16_t* data = const_cast<char16_t*>(m_own->RW::GetData());
    int32_t k = 0;
    for (int32_t i = 0; i < length; ++i) {
        uint32_t v = static_cast<uint32_t>(text[i]);
        if (!isScalar(v)) {
            data[k++] = 0xFFFD;
        } else if (v > 0xFFFF) {
            data[k++] = qvutf::highSurrogateOf(v);
            data[k++] = qvutf::lowSurrogateOf(v);
        } else {
            data[k++] = static_cast<char16_t>(v);
        }
    }
    unlockAfterWrite(data, k);
}

String::String(const std::u16string& text)
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    if (text.size() > static_cast<size_t>(kMaxLength))
        throw OutOfMemoryException();
    initText(ACQUIRE_COPY, text.data(), static_cast<int32_t>(text.size()), 0);
}

void String::hold(util::ICharBuffer* buffer, util::RWCharBuffer* own) noexcept
{
    // The caller has taken the reference for us.
    util::ICharBuffer* old = m_buffer;
    m_buffer = buffer;
    m_own = own;
    m_exclusive.store(false, std::memory_order_relaxed);
    dropNarrow();
    if (old)
        old->Release();
}

void String::holdEmpty() noexcept
{
    util::ICharBuffer* empty = emptyBuffer();
    empty->AddRef();
    hold(empty, nullptr);
}

void String::holdShared(util::ICharBuffer* buffer, util::RWCharBuffer* own) noexcept
{
    buffer->AddRef();
    hold(buffer, own);
}

void String::holdNew(const char16_t* text, int32_t length, int32_t capacity)
{
    if (length > kMaxLength || capacity > kMaxLength + 1)
        throw OutOfMemoryException();
    RW* fresh = detail::EmbeddedCharBuffer::create(length + 1 > capacity ? length + 1 : capacity);
    char16_t* data = const_cast<char16_t*>(fresh->RW::GetData());
    if (length > 0)
        std::memcpy(data, text, static_cast<size_t>(length) * sizeof(char16_t));
    data[length] = 0;
    fresh->RW::releaseWriteLock(length + 1);
    fresh->AddRef();
    hold(fresh, fresh);
    m_exclusive.store(true, std::memory_order_relaxed);
}

void String::holdWrap(const char16_t* text, int32_t length)
{
    if (length == -1)
        length = QVStrLenW(text);
    if (!text) {
        holdEmpty();
        return;
    }
    if (length < 0)
        length = 0;
    if (length > kMaxLength)
        throw OutOfMemoryException();
    util::ROCharBuffer* wrap = new util::ROCharBuffer(text, length + 1);
    wrap->AddRef();
    hold(wrap, nullptr);
}

void String::initText(AcquireMode mode, const char16_t* text, int32_t length, int32_t capacity)
{
    if (mode == ACQUIRE_WRAP) {
        holdWrap(text, length);
        return;
    }
    if (length == -1)
        length = QVStrLenW(text);
    if (!text && length > 0)
        throw ResultException(results::INVALIDARG);
    if (length < 0)
        length = 0;
    if (length < 1 && capacity < 1) {
        holdEmpty();
        return;
    }
    holdNew(text, length, capacity);
    if (mode == ACQUIRE_COPY_UPPER)
        QVStrToUpperNW(const_cast<char16_t*>(m_own->RW::GetData()), length);
}

void String::initRegion(AcquireMode mode, const String& source, int32_t begin, int32_t end, int32_t capacity)
{
    int32_t length = source.currentLength();
    if (end < 0 || end > length)
        end = length;
    if (begin > end)
        begin = end;
    // A negative begin would read before the text.
    if (begin < 0)
        begin = 0;
    int32_t count = end - begin;
    if (count == 0 && capacity < 1) {
        holdEmpty();
        return;
    }
    if (mode == ACQUIRE_SHARE && begin == 0 && end == length) {
        holdShared(source.m_buffer, source.m_own);
        source.markShared();
        return;
    }
    initText(mode == ACQUIRE_SHARE ? ACQUIRE_COPY : mode, source.currentData() + begin, count, capacity);
}

String String::CQVString(const String& source)
{
    return String(source);
}

String String::CQVString(AcquireMode mode, const String& source, int32_t begin, int32_t end, int32_t capacity)
{
    return String(mode, source, begin, end, capacity);
}

String String::CQVString(const char16_t* text, int32_t length, int32_t capacity)
{
    return String(text, length, capacity);
}

String String::CQVString(AcquireMode mode, const char16_t* text, int32_t length, int32_t capacity)
{
    return String(mode, text, length, capacity);
}

// The sole-holder test: take a reference and read the count that Release
// answers. A read-only buffer is never written in place.
bool String::claimSole()
{
    bool sole = false;
    if (m_buffer->IsWritable()) {
        m_buffer->AddRef();
        sole = m_buffer->Release() < 2;
    }
    if (sole)
        m_exclusive.store(m_own != nullptr, std::memory_order_relaxed);
    return sole;
}

void String::copyOnWrite(int32_t capacity)
{
    if (claimSole())
        return;
    const char16_t* units = nullptr;
    qvcom::throwIfFailed(m_buffer->GetReadLock(&units));
    int32_t length = m_buffer->GetLength();
    if (length < 0 || !units)
        length = 0;
    RW* fresh = nullptr;
    try {
        fresh = detail::EmbeddedCharBuffer::create(capacity > length ? capacity : length);
    } catch (...) {
        m_buffer->ReleaseReadLock();
        throw;
    }
    if (length > 0) {
        std::memcpy(const_cast<char16_t*>(fresh->RW::GetData()), units, static_cast<size_t>(length) * sizeof(char16_t));
        fresh->RW::releaseWriteLock(length);
    }
    m_buffer->ReleaseReadLock();
    fresh->AddRef();
    hold(fresh, fresh);
    m_exclusive.store(true, std::memory_order_relaxed);
}

// Copy-on-write and the edit in one pass, for a String that must copy: the
// new buffer receives the text before start, the inserted units (written by
// put) and the text after start + count. The held buffer, and any text
// taken from it, stays intact until the new buffer replaces it.
template <class Put>
void String::rebuild(int32_t length, int32_t start, int32_t count, int32_t inserted, int32_t newLength, const Put& put)
{
    const char16_t* units = nullptr;
    qvcom::throwIfFailed(m_buffer->GetReadLock(&units));
    RW* fresh = nullptr;
    try {
        fresh = detail::EmbeddedCharBuffer::create(newLength + 1);
    } catch (...) {
        m_buffer->ReleaseReadLock();
        throw;
    }
    char16_t* data = const_cast<char16_t*>(fresh->RW::GetData());
    if (start > 0)
        std::memcpy(data, units, static_cast<size_t>(start) * sizeof(char16_t));
    put(data + start);
    int32_t tail = length - start - count;
    if (tail > 0)
        std::memcpy(data + start + inserted, units + start + count, static_cast<size_t>(tail) * sizeof(char16_t));
    data[newLength] = 0;
    m_buffer->ReleaseReadLock();
    fresh->RW::releaseWriteLock(newLength + 1);
    fresh->AddRef();
    hold(fresh, fresh);
    m_exclusive.store(true, std::memory_order_relaxed);
}

// Copy-on-write, then room for capacity units; the held buffer's write lock
// is taken when it is not one of our own.
inline char16_t* String::lockForWrite(int32_t capacity)
{
    dropNarrow();
    if (!(m_own && m_exclusive.load(std::memory_order_relaxed)))
        copyOnWrite(capacity);
    if (m_own) {
        if (m_own->getCapacity() < capacity)
            return m_own->RW::ensureCapacity(capacity);
        return const_cast<char16_t*>(m_own->RW::GetData());
    }
    char16_t* data = nullptr;
    qvcom::throwIfFailed(m_buffer->GetWriteLock(capacity, &data));
    return data;
}

inline void String::unlockAfterWrite(char16_t* data, int32_t newLength)
{
    data[newLength] = 0;
    if (m_own)
        m_own->RW::releaseWriteLock(newLength + 1);
    else
        qvcom::throwIfFailed(m_buffer->ReleaseWriteLock(newLength + 1));
}

inline String& String::replaceRun(int32_t start, int32_t count, const char16_t* run, int32_t inserted)
{
    int32_t length = currentLength();
    start = clampStart(start, length);
    if (count < 0 || count > length - start)
        count = length - start;
    int64_t newLength = static_cast<int64_t>(length) - count + inserted;
    if (newLength > kMaxLength)
        throw OutOfMemoryException();
    if (!(m_own && m_exclusive.load(std::memory_order_relaxed)) && !claimSole()) {
        rebuild(length, start, count, inserted, static_cast<int32_t>(newLength), [&](char16_t* at) {
            if (inserted > 0)
                std::memcpy(at, run, static_cast<size_t>(inserted) * sizeof(char16_t));
        });
        return *this;
    }
    // Text taken from this String's own buffer would move or be overwritten
    // under the edit.
    bool aliased = overlaps(run, inserted, currentData(), length + 1);
    detail::UnitScratch scratch(aliased ? inserted : 0);
    if (aliased) {
        std::memcpy(scratch.get(), run, static_cast<size_t>(inserted) * sizeof(char16_t));
        run = scratch.get();
    }
    char16_t* data = lockForWrite(static_cast<int32_t>(newLength) + 1);
    if (inserted != count) {
        int32_t tail = length - start - count;
        if (tail > 0)
            std::memmove(data + start + inserted, data + start + count, static_cast<size_t>(tail) * sizeof(char16_t));
    }
    if (inserted > 0)
        std::memcpy(data + start, run, static_cast<size_t>(inserted) * sizeof(char16_t));
    unlockAfterWrite(data, static_cast<int32_t>(newLength));
    return *this;
}

inline String& String::replaceFill(int32_t start, int32_t count, char16_t c, int32_t repeat)
{
    if (repeat < 0)
        repeat = 0;
    int32_t length = currentLength();
    start = clampStart(start, length);
    if (count < 0 || count > length - start)
        count = length - start;
    int64_t newLength = static_cast<int64_t>(length) - count + repeat;
    if (newLength > kMaxLength)
        throw OutOfMemoryException();
    if (!(m_own && m_exclusive.load(std::memory_order_relaxed)) && !claimSole()) {
        rebuild(length, start, count, repeat, static_cast<int32_t>(newLength), [&](char16_t* at) {
            for (int32_t i = 0; i < repeat; ++i)
                at[i] = c;
        });
        return *this;
    }
    char16_t* data = lockForWrite(static_cast<int32_t>(newLength) + 1);
    if (repeat != count) {
        int32_t tail = length - start - count;
        if (tail > 0)
            std::memmove(data + start + repeat, data + start + count, static_cast<size_t>(tail) * sizeof(char16_t));
    }
    for (int32_t i = 0; i < repeat; ++i)
        data[start + i] = c;
    unlockAfterWrite(data, static_cast<int32_t>(newLength));
    return *this;
}

String& String::replace(int32_t start, int32_t count, const char16_t* text, int32_t textLength, int32_t textStart)
{
    if (textLength == -1)
        textLength = QVStrLenW(text);
    if (!text || textLength < 0)
        textLength = 0;
    if (textStart < 0)
        textStart = 0;
    if (textStart > textLength)
        textStart = textLength;
    return replaceRun(start, count, text ? text + textStart : nullptr, textLength - textStart);
}

String& String::replace(int32_t start, int32_t count, const String& text, int32_t textStart)
{
    return replace(start, count, text.currentData(), text.currentLength(), textStart);
}

String& String::replace(int32_t start, int32_t count, char16_t c, int32_t repeat)
{
    return replaceFill(start, count, c, repeat);
}

String& String::operator=(const String& other)
{
    return setTo(other);
}

String& String::operator=(const char16_t* text)
{
    return setTo(text);
}

String& String::operator=(char16_t c)
{
    return setTo(c);
}

String& String::setTo(const String& other)
{
    if (&other == this)
        return *this;
    return replace(0, -1, other.currentData(), other.currentLength(), 0);
}

String& String::setTo(const char16_t* text, int32_t length)
{
    return replace(0, -1, text, length, 0);
}

String& String::setTo(char16_t c, int32_t repeat)
{
    return replaceFill(0, -1, c, repeat);
}

String& String::setTo(AcquireMode mode, const char16_t* text, int32_t length, int32_t capacity)
{
    if (mode == ACQUIRE_WRAP) {
        holdWrap(text, length);
        return *this;
    }
    replace(0, -1, text, length, 0);
    int32_t newLength = currentLength();
    if (capacity > newLength) {
        char16_t* data = lockForWrite(capacity + 1);
        unlockAfterWrite(data, newLength);
    }
    if (mode == ACQUIRE_COPY_UPPER)
        toUpper();
    return *this;
}

String& String::setAddRef(const String& other)
{
    if (&other != this && other.m_buffer != m_buffer) {
        holdShared(other.m_buffer, other.m_own);
        other.markShared();
    }
    return *this;
}

String& String::append(const String& text)
{
    return replace(-1, 0, text.currentData(), text.currentLength(), 0);
}

String& String::append(const char16_t* text, int32_t length)
{
    return replace(-1, 0, text, length, 0);
}

String& String::append(char16_t c, int32_t repeat)
{
    return replaceFill(-1, 0, c, repeat);
}

String& String::prepend(const String& text)
{
    return replace(0, 0, text.currentData(), text.currentLength(), 0);
}

String& String::prepend(const char16_t* text, int32_t length)
{
    return replace(0, 0, text, length, 0);
}

String& String::prepend(char16_t c, int32_t repeat)
{
    return replaceFill(0, 0, c, repeat);
}

String& String::insert(int32_t position, const String& text)
{
    return replace(position, 0, text.currentData(), text.currentLength(), 0);
}

String& String::insert(int32_t position, const char16_t* text, int32_t length)
{
    return replace(position, 0, text, length, 0);
}

String& String::insert(int32_t position, char16_t c, int32_t repeat)
{
    return replaceFill(position, 0, c, repeat);
}

String& String::remove(int32_t start, int32_t count)
{
    return replaceRun(start, count, nullptr, 0);
}

String& String::resize(int32_t newLength, char16_t fill)
{
    if (newLength < 0)
        newLength = 0;
    int32_t length = currentLength();
    if (newLength <= length)
        return replaceRun(newLength, -1, nullptr, 0);
    return replaceFill(length, 0, fill, newLength - length);
}

String& String::clear()
{
    return replaceRun(0, -1, nullptr, 0);
}

String& String::setCharAt(int32_t index, char16_t c)
{
    if (index < 0 || index >= currentLength())
        throw RangeErrorException();
    return replaceFill(index, 1, c, 1);
}

char16_t String::getCharAt(int32_t index) const
{
    if (index < 0 || index > currentLength())
        throw RangeErrorException();
    return currentData()[index];
}

String& String::translate(char16_t from, char16_t to)
{
    return translate(TextRef(&from, 1), TextRef(&to, 1));
}

String& String::translate(TextRef from, TextRef to)
{
    int32_t length = currentLength();
    const char16_t* data = currentData();
    int32_t mapped = from.length() < to.length() ? from.length() : to.length();
    auto target = [&](char16_t unit, char16_t& result) {
        for (int32_t k = 0; k < mapped; ++k) {
            if (from.data()[k] == unit) {
                result = to.data()[k];
                return true;
            }
        }
        return false;
    };
    int32_t first = 0;
    char16_t unit = 0;
    while (first < length && !(target(data[first], unit) && unit != data[first]))
        ++first;
    if (first == length)
        return *this;
    detail::UnitScratch translated(length);
    char16_t* out = translated.get();
    for (int32_t i = 0; i < length; ++i) {
        unit = data[i];
        target(data[i], unit);
        out[i] = unit;
    }
    return replaceRun(0, -1, out, length);
}

String& String::toLower()
{
    int32_t length = currentLength();
    char16_t* data = lockForWrite(length + 1);
    QVStrToLowerNW(data, length);
    unlockAfterWrite(data, length);
    return *this;
}

String& String::toUpper()
{
    int32_t length = currentLength();
    char16_t* data = lockForWrite(length + 1);
    QVStrToUpperNW(data, length);
    unlockAfterWrite(data, length);
    return *this;
}

template <class InSet>
String& String::trimWith(const InSet& inSet, TrimType type)
{
    int32_t length = currentLength();
    const char16_t* data = currentData();
    int32_t lead = 0;
    int32_t trail = 0;
    if (type & TRIM_LEADING) {
        while (lead < length && inSet(data[lead]))
            ++lead;
    }
    if (type & TRIM_TRAILING) {
        while (trail < length - lead && inSet(data[length - 1 - trail]))
            ++trail;
    }
    // A String that must copy anyway copies only what remains, in one edit;
    // one of its own cuts both runs in place.
    if (lead > 0 && trail > 0 && !(m_own && m_exclusive.load(std::memory_order_relaxed)))
        return replaceRun(0, -1, data + lead, length - lead - trail);
    if (trail > 0)
        replaceRun(length - trail, trail, nullptr, 0);
    if (lead > 0)
        replaceRun(0, lead, nullptr, 0);
    return *this;
}

String& String::trim(TrimType type)
{
    return trimWith([](char16_t u) { return u == u' ' || u == u'\t' || u == u'\r' || u == u'\n'; }, type);
}

String& String::trim(char16_t c, TrimType type)
{
    return trimWith([c](char16_t u) { return u == c; }, type);
}

String& String::trim(const char16_t* set, int32_t setLength, TrimType type)
{
    if (!set)
        return *this;
    if (setLength == -1)
        return trimWith([set](char16_t u) { return QVStrChrW(set, u) != nullptr; }, type);
    return trimWith(
        [set, setLength](char16_t u) {
            for (int32_t k = 0; k < setLength; ++k) {
                if (set[k] == u)
                    return true;
            }
            return false;
        },
        type);
}

String& String::trim(const String& set, TrimType type)
{
    // Kept apart from this String's buffer: trimming may rewrite it.
    String keep(set);
    return trim(keep.currentData(), keep.currentLength(), type);
}

int32_t String::getLength() const
{
    return currentLength();
}

const char16_t* String::getData() const
{
    return currentData();
}

int32_t String::GetLength() const
{
    return currentLength();
}

const char16_t* String::GetData() const
{
    return currentData();
}

const char16_t* String::getReadLock() const
{
    const char16_t* data = nullptr;
    qvcom::throwIfFailed(m_buffer->GetReadLock(&data));
    return data;
}

void String::releaseReadLock() const
{
    qvcom::throwIfFailed(m_buffer->ReleaseReadLock());
}

bool String::isWritable() const
{
    return true;
}

char16_t* String::getWriteLock(int32_t capacity)
{
    if (capacity > kMaxLength)
        throw OutOfMemoryException();
    return lockForWrite((capacity < 0 ? 0 : capacity) + 1);
}

char16_t* String::ensureCapacity(int32_t capacity)
{
    if (capacity > kMaxLength)
        throw OutOfMemoryException();
    int32_t units = (capacity < 0 ? 0 : capacity) + 1;
    if (m_own)
        return m_own->RW::ensureCapacity(units);
    char16_t* data = nullptr;
    qvcom::throwIfFailed(m_buffer->EnsureCapacity(units, &data));
    return data;
}

void String::releaseWriteLock(int32_t newLength)
{
    if (newLength < -1) {
        m_buffer->ReleaseWriteLock(-1);
        throw ResultException(results::INVALIDARG);
    }
    if (newLength == -1) {
        if (m_own) {
            // Bounded by the block, in case the writer left no NUL.
            char16_t* data = const_cast<char16_t*>(m_own->RW::GetData());
            int32_t capacity = m_own->getCapacity();
            int32_t length = 0;
            while (length < capacity && data[length] != 0)
                ++length;
            if (length == capacity) {
                length = capacity - 1;
                data[length] = 0;
            }
            m_own->RW::releaseWriteLock(length + 1);
            return;
        }
        int32_t length = QVStrLenW(m_buffer->GetData());
        qvcom::throwIfFailed(m_buffer->ReleaseWriteLock(length + 1));
        return;
    }
    char16_t* data = nullptr;
    try {
        data = ensureCapacity(newLength);
    } catch (...) {
        if (!m_own)
            m_buffer->ReleaseWriteLock(-1);
        throw;
    }
    unlockAfterWrite(data, newLength);
}

void String::freeExtra()
{
    if (m_own)
        m_own->RW::freeExtra();
    else
        qvcom::throwIfFailed(m_buffer->FreeExtra());
}

String String::toString()
{
    return String(*this);
}

Object* String::clone() const
{
    if (typeid(*this) != typeid(String))
        throw CloneNotSupportedException();
    return new String(*this);
}

std::u16string String::toU16String() const
{
    return std::u16string(currentData(), static_cast<size_t>(currentLength()));
}

std::string String::toUtf8() const
{
    const char16_t* data = currentData();
    int32_t length = currentLength();
    std::string out;
    out.reserve(static_cast<size_t>(length));
    for (int32_t i = 0; i < length; ++i) {
        uint32_t v = data[i];
        if (qvutf::isHighSurrogate(v) && i + 1 < length && qvutf::isLowSurrogate(data[i + 1])) {
            v = qvutf::combineSurrogates(v, data[i + 1]);
            ++i;
        } else if (qvutf::isSurrogate(v)) {
            v = 0xFFFD;
        }
        char bytes[4];
        out.append(bytes, static_cast<size_t>(qvutf::encodeUtf8(v, bytes)));
    }
    return out;
}

String::AnsiBytes::AnsiBytes(const char16_t* encoding) : m_encoding(nullptr)
{
    if (encoding) {
        int32_t length = QVStrLenW(encoding);
        m_encoding = static_cast<char16_t*>(QVMemAlloc((static_cast<size_t>(length) + 1) * sizeof(char16_t)));
        if (!m_encoding)
            throw OutOfMemoryException();
        std::memcpy(m_encoding, encoding, (static_cast<size_t>(length) + 1) * sizeof(char16_t));
    }
}

String::AnsiBytes::~AnsiBytes()
{
    QVMemFree(m_encoding);
}

bool String::AnsiBytes::encodingEquals(const char16_t* encoding) const noexcept
{
    if (!m_encoding || !encoding)
        return !m_encoding && !encoding;
    auto fold = [](char16_t u) { return (u >= u'a' && u <= u'z') ? static_cast<char16_t>(u - 0x20) : u; };
    for (int32_t i = 0;; ++i) {
        char16_t a = fold(m_encoding[i]);
        char16_t b = fold(encoding[i]);
        if (a != b)
            return false;
        if (a == 0)
            return true;
    }
}

} // namespace qv
