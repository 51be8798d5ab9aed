#include <qv/text/charset/CTBASCII.h>
#include <qv/text/charset/CTBCP1252.h>
#include <qv/text/charset/CTBCP437.h>
#include <qv/text/charset/CTBISO8859_1.h>

#include <cstdio>

#include "ConverterSupport.h"
#include "Simd.h"
#include "SingleByteCodes.h"

namespace qv::text::charset {

CTBSingleByte::CTBSingleByte(const detail::SingleByteCode& code) : m_code(&code), m_high(0) {}

int32_t CTBSingleByte::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes,
                               int32_t* outPos, int32_t outEnd)
{
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    const detail::SingleByteCode& code = *m_code;
    return detail::runConversion(
        m_high, in, inPos, inEnd, outBytes, outPos, outEnd, [&](detail::Conversion<char16_t>& c) {
            char16_t& high = c.state;
            int32_t& ip = c.ip;
            int32_t& op = c.op;

            while (ip < inEnd && op < outEnd) {
#if QVCL3_CHARSET_SSE2
                if (high == 0) {
                    const __m128i outside =
                        _mm_set1_epi16(static_cast<short>(code.identityBelow == 0x100 ? 0xFF00 : 0xFF80));
                    const __m128i zero = _mm_setzero_si128();
                    while (inEnd - ip >= 16 && outEnd - op >= 16) {
                        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip));
                        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip + 8));
                        if (_mm_movemask_epi8(_mm_cmpeq_epi16(_mm_and_si128(_mm_or_si128(a, b), outside), zero)) !=
                            0xFFFF) {
                            break;
                        }
                        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), _mm_packus_epi16(a, b));
                        ip += 16;
                        op += 16;
                    }
                }
#endif
                // Plain characters first; everything else takes the careful step.
                while (high == 0 && ip < inEnd && op < outEnd) {
                    const int byte = detail::findByte(code, in[ip]);
                    if (byte < 0) {
                        break;
                    }
                    out[op++] = static_cast<uint8_t>(byte);
                    ++ip;
                }
                if (ip >= inEnd || op >= outEnd) {
                    break;
                }

                uint32_t c = in[ip];
                int32_t units = 1;
                if (high != 0) {
                    if (!detail::isLowSurrogate(c)) {
                        detail::throwLoneHighSurrogate();
                    }
                    c = detail::combineSurrogates(high, c);
                    high = 0;
                } else if (detail::isHighSurrogate(c)) {
                    if (inEnd - ip < 2) {
                        high = static_cast<char16_t>(c);
                        ++ip;
                        break;
                    }
                    if (!detail::isLowSurrogate(in[ip + 1])) {
                        detail::throwLoneHighSurrogate();
                    }
                    c = detail::combineSurrogates(c, in[ip + 1]);
                    units = 2;
                } else if (detail::isLowSurrogate(c)) {
                    detail::throwLoneLowSurrogate();
                }
                const int byte = c < 0x10000 ? detail::findByte(code, c) : -1;
                if (byte >= 0) {
                    out[op++] = static_cast<uint8_t>(byte);
                } else if (!substitutionMode) {
                    char message[64];
                    std::snprintf(message, sizeof message, "U+%04X has no mapping in %s", static_cast<unsigned>(c),
                                  code.label);
                    detail::throwUnmappableCharacter(message);
                } else if (substitutionCount == 1) {
                    out[op++] = static_cast<uint8_t>(substitutionBytes[0]);
                }
                ip += units;
            }
        });
}

int32_t CTBSingleByte::flush(signed char* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    if (m_high != 0) {
        detail::throwHighSurrogateAtEnd();
    }
    return 0;
}

void CTBSingleByte::reset()
{
    m_high = 0;
}

const char16_t* CTBSingleByte::getEncodingName()
{
    return m_code->name;
}

int CTBSingleByte::getMaxBytesPerChar()
{
    return 1;
}

int CTBSingleByte::getMaxCharsPerByte()
{
    return 1;
}

CTBASCII::CTBASCII() : CTBSingleByte(detail::asciiCode) {}

CTBISO8859_1::CTBISO8859_1() : CTBSingleByte(detail::latin1Code) {}

CTBCP437::CTBCP437() : CTBSingleByte(detail::cp437Code) {}

CTBCP1252::CTBCP1252() : CTBSingleByte(detail::cp1252Code) {}

} // namespace qv::text::charset
