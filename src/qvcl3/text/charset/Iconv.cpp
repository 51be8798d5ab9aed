#include "Iconv.h"

#include <cerrno>
#include <cstdio>
#include <iconv.h>
#include <new>

#include "ConverterSupport.h"

namespace qv::text::charset::detail {

namespace {

inline iconv_t descriptor(void* d)
{
    return static_cast<iconv_t>(d);
}

Iconv::Status statusOf(size_t result)
{
    if (result != static_cast<size_t>(-1)) {
        return Iconv::Status::Done;
    }
    switch (errno) {
    case E2BIG: return Iconv::Status::OutputFull;
    case EINVAL: return Iconv::Status::Incomplete;
    default: return Iconv::Status::Invalid;
    }
}

} // namespace

Iconv::Iconv(const char* from, const char* to) : m_descriptor(nullptr)
{
    iconv_t d = iconv_open(to, from);
    if (d == reinterpret_cast<iconv_t>(-1)) {
        if (errno == ENOMEM) {
            throw std::bad_alloc();
        }
        char message[96];
        std::snprintf(message, sizeof message, "No converter from %s to %s on this system", from, to);
        throwUnknownEncoding(message);
    }
    m_descriptor = d;
}

Iconv::~Iconv()
{
    iconv_close(descriptor(m_descriptor));
}

Iconv::Status Iconv::convert(const uint8_t* in, size_t& inPos, size_t inEnd, uint8_t* out, size_t& outPos,
                             size_t outEnd)
{
    // iconv's prototype takes char** for an input it never writes.
    char* inPtr = const_cast<char*>(reinterpret_cast<const char*>(in + inPos));
    size_t inLeft = inEnd - inPos;
    char* outPtr = reinterpret_cast<char*>(out + outPos);
    size_t outLeft = outEnd - outPos;
    const Status status = statusOf(iconv(descriptor(m_descriptor), &inPtr, &inLeft, &outPtr, &outLeft));
    inPos = inEnd - inLeft;
    outPos = outEnd - outLeft;
    return status;
}

Iconv::Status Iconv::flush(uint8_t* out, size_t& outPos, size_t outEnd)
{
    char* outPtr = reinterpret_cast<char*>(out + outPos);
    size_t outLeft = outEnd - outPos;
    const Status status = statusOf(iconv(descriptor(m_descriptor), nullptr, nullptr, &outPtr, &outLeft));
    outPos = outEnd - outLeft;
    return status;
}

void Iconv::reset()
{
    iconv(descriptor(m_descriptor), nullptr, nullptr, nullptr, nullptr);
}

bool Iconv::hostIsLittleEndian()
{
    const char16_t probe = 1;
    return *reinterpret_cast<const unsigned char*>(&probe) == 1;
}

} // namespace qv::text::charset::detail
