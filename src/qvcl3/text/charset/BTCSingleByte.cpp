#include <qv/text/charset/BTCASCII.h>
#include <qv/text/charset/BTCCP1252.h>
#include <qv/text/charset/BTCCP437.h>
#include <qv/text/charset/BTCISO8859_1.h>

#include <cstdio>

#include "ConverterSupport.h"
#include "SingleByteCodes.h"
#include "Simd.h"

namespace qv::text::charset {

namespace {

// Moves the leading run of bytes below identityBelow in blocks of 16.
inline void copyIdentityBlocks(const uint8_t* in, int32_t& ip, int32_t inEnd, char16_t* out, int32_t& op,
                               int32_t outEnd, uint32_t identityBelow)
{
#if QVCL3_CHARSET_SSE2
    const __m128i zero = _mm_setzero_si128();
    while (inEnd - ip >= 16 && outEnd - op >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip));
        const int mask = identityBelow == 0x100 ? 0 : _mm_movemask_epi8(v);
        if (mask != 0) {
            int run = detail::lowestBit(static_cast<uint32_t>(mask));
            if (run >= 8) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), _mm_unpacklo_epi8(v, zero));
                ip += 8;
                op += 8;
                run -= 8;
            }
            for (; run > 0; --run) {
                out[op++] = in[ip++];
            }
            return;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), _mm_unpacklo_epi8(v, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op + 8), _mm_unpackhi_epi8(v, zero));
        ip += 16;
        op += 16;
    }
#else
    (void)in;
    (void)ip;
    (void)inEnd;
    (void)out;
    (void)op;
    (void)outEnd;
    (void)identityBelow;
#endif
}

} // namespace

BTCSingleByte::BTCSingleByte(const detail::SingleByteCode& code) : m_code(&code)
{
}

int32_t BTCSingleByte::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out,
                               int32_t* outPos, int32_t outEnd)
{
    detail::checkConvertArguments(inBytes, inPos, inEnd, out, outPos, outEnd);
    const uint8_t* in = reinterpret_cast<const uint8_t*>(inBytes);
    const char16_t* table = m_code->toUnicode;
    int32_t ip = *inPos;
    int32_t op = *outPos;
    const int32_t opStart = op;

    while (ip < inEnd && op < outEnd) {
        copyIdentityBlocks(in, ip, inEnd, out, op, outEnd, m_code->identityBelow);
        // Eight at a time through the table, stored only when none of them
        // is undefined; an undefined byte goes to the careful step.
        while (inEnd - ip >= 8 && outEnd - op >= 8) {
            char16_t c[8];
            uint32_t undefined = 0;
            for (int k = 0; k < 8; ++k) {
                c[k] = table[in[ip + k]];
                undefined |= c[k] == 0xFFFD;
            }
            if (undefined != 0) {
                break;
            }
            for (int k = 0; k < 8; ++k) {
                out[op + k] = c[k];
            }
            ip += 8;
            op += 8;
            if (in[ip - 1] < 0x80) {
                break;
            }
        }
        if (ip >= inEnd || op >= outEnd) {
            break;
        }
        const uint8_t b = in[ip];
        const char16_t c = table[b];
        if (c != 0xFFFD) {
            out[op++] = c;
        } else if (!substitutionMode) {
            char message[64];
            std::snprintf(message, sizeof message, "Byte 0x%02X has no mapping in %s", b, m_code->label);
            detail::throwUnmappableCharacter(message);
        } else if (substitutionCount == 1) {
            out[op++] = substitutionChars[0];
        }
        ++ip;
    }

    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

int32_t BTCSingleByte::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    return 0;
}

void BTCSingleByte::reset()
{
}

const char16_t* BTCSingleByte::getEncodingName() const
{
    return m_code->name;
}

int BTCSingleByte::getMaxBytesPerChar() const
{
    return 1;
}

int BTCSingleByte::getMaxCharsPerByte() const
{
    return 1;
}

BTCASCII::BTCASCII() : BTCSingleByte(detail::asciiCode)
{
}

BTCISO8859_1::BTCISO8859_1() : BTCSingleByte(detail::latin1Code)
{
}

BTCCP437::BTCCP437() : BTCSingleByte(detail::cp437Code)
{
}

BTCCP1252::BTCCP1252() : BTCSingleByte(detail::cp1252Code)
{
}

} // namespace qv::text::charset
