#include <qv/text/charset/BTCASCII.h>
#include <qv/text/charset/BTCCP1252.h>
#include <qv/text/charset/BTCCP437.h>
#include <qv/text/charset/BTCISO8859_1.h>

#include <cstdio>

#include "ConverterSupport.h"
#include "Simd.h"
#include "SingleByteCodes.h"

namespace qv::text::charset {

BTCSingleByte::BTCSingleByte(const detail::SingleByteCode& code) : m_code(&code) {}

int32_t BTCSingleByte::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out,
                               int32_t* outPos, int32_t outEnd)
{
    const uint8_t* in = reinterpret_cast<const uint8_t*>(inBytes);
    const char16_t* table = m_code->toUnicode;
    detail::Stateless none;
    return detail::runConversion(
        none, inBytes, inPos, inEnd, out, outPos, outEnd, [&](detail::Conversion<detail::Stateless>& c) {
            int32_t& ip = c.ip;
            int32_t& op = c.op;

            while (ip < inEnd && op < outEnd) {
#if QVCL3_CHARSET_SSE2
                // Sixteen bytes at a time, widened and stored as if they stood for
                // themselves; a block with other bytes goes through the table. A
                // block with an undefined byte leaves to the careful step, which
                // rewrites what was stored for it.
                const __m128i zero = _mm_setzero_si128();
                const bool latin1 = m_code->identityBelow == 0x100;
                while (inEnd - ip >= 16 && outEnd - op >= 16) {
                    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip));
                    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), _mm_unpacklo_epi8(v, zero));
                    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op + 8), _mm_unpackhi_epi8(v, zero));
                    if (!latin1 && _mm_movemask_epi8(v) != 0) {
                        const uint64_t bytes[2] = {static_cast<uint64_t>(_mm_cvtsi128_si64(v)),
                                                   static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(v, v)))};
                        uint32_t undefined = 0;
                        for (int k = 0; k < 16; ++k) {
                            const char16_t c = table[(bytes[k >> 3] >> (8 * (k & 7))) & 0xFF];
                            out[op + k] = c;
                            undefined |= c == 0xFFFD ? 1u : 0u;
                        }
                        if (undefined != 0) {
                            break;
                        }
                    }
                    ip += 16;
                    op += 16;
                }
#endif
                // Eight at a time through the table, stored only when none of them
                // is undefined; an undefined byte goes to the careful step.
                while (inEnd - ip >= 8 && outEnd - op >= 8) {
                    char16_t c[8];
                    uint32_t undefined = 0;
                    for (int k = 0; k < 8; ++k) {
                        c[k] = table[in[ip + k]];
                        undefined |= c[k] == 0xFFFD ? 1u : 0u;
                    }
                    if (undefined != 0) {
                        break;
                    }
                    for (int k = 0; k < 8; ++k) {
                        out[op + k] = c[k];
                    }
                    ip += 8;
                    op += 8;
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
        });
}

int32_t BTCSingleByte::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    return 0;
}

void BTCSingleByte::reset() {}

const char16_t* BTCSingleByte::getEncodingName()
{
    return m_code->name;
}

int BTCSingleByte::getMaxBytesPerChar()
{
    return 1;
}

int BTCSingleByte::getMaxCharsPerByte()
{
    return 1;
}

BTCASCII::BTCASCII() : BTCSingleByte(detail::asciiCode) {}

BTCISO8859_1::BTCISO8859_1() : BTCSingleByte(detail::latin1Code) {}

BTCCP437::BTCCP437() : BTCSingleByte(detail::cp437Code) {}

BTCCP1252::BTCCP1252() : BTCSingleByte(detail::cp1252Code) {}

} // namespace qv::text::charset
