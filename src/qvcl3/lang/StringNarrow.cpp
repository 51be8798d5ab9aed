#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>
#include <qv/text/charset/ByteToCharConverter.h>
#include <qv/text/charset/CharToByteConverter.h>

#include "EmbeddedCharBuffer.h"
#include "UnitScratch.h"

#include <cstdint>

namespace qv {

namespace {

typedef util::RWCharBuffer RW;
using text::charset::ByteToCharConverter;
using text::charset::CharToByteConverter;

// A converter that neither consumes nor produces although it has input and
// room breaks the conversion contract; stop rather than spin.
[[noreturn]] void throwStalled()
{
    throw IllegalStateException(String(u"converter made no progress"));
}

// A converter stops before a character whose output does not fit whole, so
// a stop with less room left than the longest character of any encoding
// (sixteen elements, with room to spare) is a stop for room.
bool stoppedForRoom(int32_t outPos, int64_t room)
{
    return room - outPos < 16;
}

int32_t checkedSize(int64_t size)
{
    if (size > detail::kMaxStringLength)
        throw OutOfMemoryException();
    return static_cast<int32_t>(size);
}

// A byte buffer's failing code: a shortage of memory is thrown as what it
// is, so callers catch it as they catch any other allocation failure.
void checkBuffer(Result code)
{
    if (code == results::OUTOFMEMORY)
        throw OutOfMemoryException();
    qvcom::throwIfFailed(code);
}

class ReadLock {
public:
    explicit ReadLock(const String& text) : m_text(text), m_units(text.getReadLock()) {}
    ~ReadLock() { m_text.releaseReadLock(); }
    ReadLock(const ReadLock&) = delete;
    ReadLock& operator=(const ReadLock&) = delete;
    const char16_t* units() const noexcept { return m_units; }

private:
    const String& m_text;
    const char16_t* m_units;
};

// The write lock of a byte buffer, given back with the old length unless
// the conversion finished.
class ByteWriteLock {
public:
    ByteWriteLock(util::IByteBuffer& buffer, int32_t capacity) : m_buffer(buffer), m_oldLength(buffer.GetLength())
    {
        checkBuffer(m_buffer.GetWriteLock(capacity, &m_data));
        m_locked = true;
        m_room = capacity - 1;
    }
    ~ByteWriteLock()
    {
        // A failed EnsureCapacity nulls the data pointer but keeps the lock.
        if (m_locked)
            m_buffer.ReleaseWriteLock(m_oldLength);
    }
    ByteWriteLock(const ByteWriteLock&) = delete;
    ByteWriteLock& operator=(const ByteWriteLock&) = delete;

    signed char* data() const noexcept { return m_data; }
    // Output room: the capacity less the NUL.
    int32_t room() const noexcept { return m_room; }
    void grow(int64_t capacity)
    {
        const int32_t size = checkedSize(capacity);
        checkBuffer(m_buffer.EnsureCapacity(size, &m_data));
        m_room = size - 1;
    }
    void finish(int32_t length)
    {
        m_data[length] = 0;
        m_locked = false;
        checkBuffer(m_buffer.ReleaseWriteLock(length));
    }

private:
    util::IByteBuffer& m_buffer;
    int32_t m_oldLength;
    signed char* m_data = nullptr;
    int32_t m_room = 0;
    bool m_locked = false;
};

} // namespace

String::String(const char* bytes, int32_t length, const char16_t* encoding, int32_t capacity)
    : m_buffer(nullptr), m_narrow(nullptr), m_reserved(nullptr), m_own(nullptr), m_exclusive(false)
{
    internalSetTo(bytes, length, encoding, capacity);
}

String::String(const signed char* bytes, int32_t length, const char16_t* encoding, int32_t capacity)
    : String(reinterpret_cast<const char*>(bytes), length, encoding, capacity)
{}

String String::CQVString(const char* bytes, int32_t length, const char16_t* encoding, int32_t capacity)
{
    return String(bytes, length, encoding, capacity);
}

String String::CQVString(const signed char* bytes, int32_t length, const char16_t* encoding, int32_t capacity)
{
    return String(bytes, length, encoding, capacity);
}

String& String::operator=(const char* bytes)
{
    return setTo(bytes);
}

String& String::operator=(const signed char* bytes)
{
    return setTo(bytes);
}

String& String::setTo(const char* bytes, int32_t length, const char16_t* encoding)
{
    internalSetTo(bytes, length, encoding, 0);
    return *this;
}

String& String::setTo(const signed char* bytes, int32_t length, const char16_t* encoding)
{
    internalSetTo(reinterpret_cast<const char*>(bytes), length, encoding, 0);
    return *this;
}

void String::internalSetTo(const char* bytes, int32_t length, const char16_t* encoding, int32_t capacity)
{
    if (length == -1)
        length = QVStrLenA(bytes);
    if (!bytes && length > 0)
        throw ResultException(results::INVALIDARG);
    if (length < 0)
        length = 0;
    dropNarrow();
    if (length < 1 && capacity < 1) {
        holdEmpty();
        return;
    }
    Reference<ByteToCharConverter> decoder = ByteToCharConverter::getConverter(encoding);
    const int32_t required = checkedSize(static_cast<int64_t>(decoder->getMaxCharsPerByte()) * length + 1);
    if (capacity > detail::kMaxStringLength)
        throw OutOfMemoryException();
    // Decoded into a buffer of its own, so that a failure leaves the text
    // this String had.
    Reference<RW> fresh(detail::EmbeddedCharBuffer::create(required > capacity ? required : capacity));
    char16_t* data = const_cast<char16_t*>(fresh->RW::GetData());
    int32_t room = fresh->getCapacity() - 1;
    const signed char* in = reinterpret_cast<const signed char*>(bytes);
    int32_t inPos = 0;
    int32_t outPos = 0;
    auto grow = [&](int64_t capacityNeeded) {
        data = fresh->RW::ensureCapacity(checkedSize(capacityNeeded));
        room = fresh->getCapacity() - 1;
    };
    while (inPos < length) {
        const int32_t inBefore = inPos;
        const int32_t outBefore = outPos;
        decoder->convert(in, &inPos, length, data, &outPos, room);
        if (inPos < length && stoppedForRoom(outPos, room))
            grow(static_cast<int64_t>(outPos) + (length - inPos) + 16);
        else if (inPos == inBefore && outPos == outBefore)
            throwStalled();
    }
    for (;;) {
        decoder->flush(data, &outPos, room);
        if (outPos < room)
            break;
        grow(static_cast<int64_t>(outPos) + 16);
    }
    data[outPos] = 0;
    fresh->RW::releaseWriteLock(outPos + 1);
    RW* made = fresh.detach();
    hold(made, made);
    m_exclusive.store(true, std::memory_order_relaxed);
}

void String::getBytes(util::IByteBuffer* buffer, const char16_t* encoding) const
{
    if (!buffer)
        throw ResultException(results::INVALIDARG);
    Reference<CharToByteConverter> encoder = CharToByteConverter::getConverter(encoding);
    ReadLock lock(*this);
    const int32_t length = currentLength();
    const int64_t perUnit = encoder->getMaxBytesPerChar();
    ByteWriteLock out(*buffer, checkedSize(perUnit * length + 1));
    int32_t inPos = 0;
    int32_t outPos = 0;
    while (inPos < length) {
        const int32_t inBefore = inPos;
        const int32_t outBefore = outPos;
        encoder->convert(lock.units(), &inPos, length, out.data(), &outPos, out.room());
        if (inPos < length && stoppedForRoom(outPos, out.room()))
            out.grow(outPos + perUnit * (length - inPos) + 16);
        else if (inPos == inBefore && outPos == outBefore)
            throwStalled();
    }
    // Byte order marks and the end of an open AMP-7 run come on top of the
    // per-unit estimate.
    for (;;) {
        encoder->flush(out.data(), &outPos, out.room());
        if (outPos < out.room())
            break;
        out.grow(static_cast<int64_t>(outPos) + 16 + 1);
    }
    out.finish(outPos);
}

const char* String::getBytes(const char16_t* encoding) const
{
    if (!m_narrow || !m_narrow->encodingEquals(encoding)) {
        Reference<AnsiBytes> fresh(new AnsiBytes(encoding));
        getBytes(static_cast<util::IByteBuffer*>(fresh.get()), encoding);
        dropNarrow();
        m_narrow = fresh.detach();
    }
    return reinterpret_cast<const char*>(m_narrow->util::RWByteBuffer::GetData());
}

const char* String::getBytesReadLock(const char16_t* encoding) const
{
    getReadLock();
    struct Release {
        const String& text;
        bool keep;
        ~Release()
        {
            if (!keep)
                text.releaseReadLock();
        }
    } release{*this, false};
    const char* bytes = getBytes(encoding);
    release.keep = true;
    return bytes;
}

int32_t String::getBytes(char* destination, int32_t capacity, const char16_t* encoding) const
{
    return getBytes(reinterpret_cast<signed char*>(destination), capacity, encoding);
}

int32_t String::getBytes(signed char* destination, int32_t capacity, const char16_t* encoding) const
{
    if (!destination && capacity > 0)
        throw ResultException(results::INVALIDARG);
    auto tooSmall = [&]() {
        if (capacity > 0)
            destination[0] = 0;
        throw ResultException(results::BUFFER_TOO_SMALL);
    };
    if (capacity < 1)
        tooSmall();
    Reference<CharToByteConverter> encoder = CharToByteConverter::getConverter(encoding);
    ReadLock lock(*this);
    const int32_t length = currentLength();
    const int32_t room = capacity - 1;
    int32_t inPos = 0;
    int32_t outPos = 0;
    while (inPos < length) {
        const int32_t inBefore = inPos;
        const int32_t outBefore = outPos;
        encoder->convert(lock.units(), &inPos, length, destination, &outPos, room);
        if (inPos < length && stoppedForRoom(outPos, room))
            tooSmall();
        else if (inPos == inBefore && outPos == outBefore)
            throwStalled();
    }
    encoder->flush(destination, &outPos, room);
    if (outPos == room) {
        // Full to the last byte: anything the encoder still holds did not fit.
        signed char probe[16];
        int32_t probePos = 0;
        if (encoder->flush(probe, &probePos, static_cast<int32_t>(sizeof(probe))) > 0)
            tooSmall();
    }
    destination[outPos] = 0;
    return outPos;
}

} // namespace qv
