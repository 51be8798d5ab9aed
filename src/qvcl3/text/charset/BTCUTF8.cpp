#include <qv/text/charset/BTCUTF8.h>
#include <qv/text/charset/SimdLevel.h>

#include "ConverterSupport.h"
#include "Simd.h"
#include "Utf8Kernels.h"

namespace qv::text::charset {

namespace {

// 0 for bytes that cannot begin a sequence.
inline int sequenceLength(uint32_t b0)
{
    if (b0 < 0x80) {
        return 1;
    }
    if (b0 < 0xC2) {
        return 0;
    }
    if (b0 < 0xE0) {
        return 2;
    }
    if (b0 < 0xF0) {
        return 3;
    }
    return b0 < 0xF5 ? 4 : 0;
}

// The second byte's range is what rules out overlong forms, surrogates and
// values above U+10FFFF; every later continuation byte is 80..BF.
inline void secondByteRange(uint32_t b0, uint8_t& low, uint8_t& high)
{
    low = 0x80;
    high = 0xBF;
    if (b0 == 0xE0) {
        low = 0xA0;
    } else if (b0 == 0xED) {
        high = 0x9F;
    } else if (b0 == 0xF0) {
        low = 0x90;
    } else if (b0 == 0xF4) {
        high = 0x8F;
    }
}

[[noreturn]] void throwBadLead(uint32_t b0)
{
    if (b0 < 0xC0) {
        detail::throwInvalidCharacter("Invalid UTF-8: continuation byte without a lead byte");
    }
    if (b0 < 0xC2) {
        detail::throwInvalidCharacter("Invalid UTF-8: overlong encoding");
    }
    detail::throwInvalidCharacter("Invalid UTF-8: lead byte F5-FF, value above U+10FFFF");
}

[[noreturn]] void throwBadContinuation(uint32_t b, uint8_t low, uint8_t high)
{
    if ((b & 0xC0) != 0x80) {
        detail::throwInvalidCharacter("Invalid UTF-8: truncated sequence");
    }
    if (low == 0xA0 || low == 0x90) {
        detail::throwInvalidCharacter("Invalid UTF-8: overlong encoding");
    }
    if (high == 0x9F) {
        detail::throwInvalidCharacter("Invalid UTF-8: encoded surrogate");
    }
    detail::throwInvalidCharacter("Invalid UTF-8: value above U+10FFFF");
}

// One multi-byte sequence at in[ip], given at least 4 bytes of input and
// 2 slots of output. Leaves anything out of the ordinary, errors included,
// to the careful step and then returns false without consuming.
inline bool decodeSequence(const uint8_t* in, int32_t& ip, char16_t* out, int32_t& op)
{
    const uint32_t b0 = in[ip];
    const uint32_t b1 = in[ip + 1];
    if (b0 < 0xE0) {
        if (b0 < 0xC2 || (b1 & 0xC0) != 0x80) {
            return false;
        }
        out[op++] = static_cast<char16_t>(((b0 & 0x1F) << 6) | (b1 & 0x3F));
        ip += 2;
        return true;
    }
    const uint32_t b2 = in[ip + 2];
    if (b0 < 0xF0) {
        const uint32_t cp = ((b0 & 0x0F) << 12) | ((b1 & 0x3F) << 6) | (b2 & 0x3F);
        if ((((b1 & 0xC0) ^ 0x80) | ((b2 & 0xC0) ^ 0x80)) != 0 || cp < 0x800 || detail::isSurrogate(cp)) {
            return false;
        }
        out[op++] = static_cast<char16_t>(cp);
        ip += 3;
        return true;
    }
    const uint32_t b3 = in[ip + 3];
    const uint32_t cp = ((b0 & 0x07) << 18) | ((b1 & 0x3F) << 12) | ((b2 & 0x3F) << 6) | (b3 & 0x3F);
    if (b0 > 0xF4 || (((b1 & 0xC0) ^ 0x80) | ((b2 & 0xC0) ^ 0x80) | ((b3 & 0xC0) ^ 0x80)) != 0 || cp < 0x10000 ||
        cp > 0x10FFFF) {
        return false;
    }
    out[op] = detail::highSurrogateOf(cp);
    out[op + 1] = detail::lowSurrogateOf(cp);
    op += 2;
    ip += 4;
    return true;
}

#if QVCL3_CHARSET_SSE2
// Sixteen bytes (fifteen when a sequence starts in the last one, see width)
// of ASCII and at most four two-byte sequences (European text), decoded
// without branching on where the sequences are. Reads 37 bytes and writes
// up to 33 units. Returns the number of sequences, or -1 when the block
// does not qualify.
inline int decodeLatinBlock(const uint8_t* in, char16_t* out, int& width)
{
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    uint32_t nonAscii = static_cast<uint32_t>(_mm_movemask_epi8(v));
    // Signed bytes: leads C2-DF are -62..-33, continuations 80-BF -128..-65.
    const __m128i leadMask =
        _mm_and_si128(_mm_cmpgt_epi8(v, _mm_set1_epi8(-63)), _mm_cmplt_epi8(v, _mm_set1_epi8(-32)));
    uint32_t leads = static_cast<uint32_t>(_mm_movemask_epi8(leadMask));
    // A sequence that starts in the last byte is left to the next block.
    width = (leads & 0x8000u) != 0 ? 15 : 16;
    leads &= 0x7FFFu;
    nonAscii &= (1u << width) - 1;
    const uint32_t continuations = static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmplt_epi8(v, _mm_set1_epi8(-64))));
    const uint32_t l1 = leads & (leads - 1);
    const uint32_t l2 = l1 & (l1 - 1);
    const uint32_t l3 = l2 & (l2 - 1);
    if ((leads | continuations) != nonAscii || continuations != leads << 1 || (l3 & (l3 - 1)) != 0) {
        return -1;
    }
    // The k-th missing sequence counts as sitting at 16 + k, so that what is
    // written for it lies past the end of the block's output (which shrinks
    // by one unit per sequence), to be overwritten later.
    const int j[4] = {detail::lowestBit(leads | 0x10000u), detail::lowestBit(l1 | 0x20000u),
                      detail::lowestBit(l2 | 0x40000u), detail::lowestBit(l3 | 0x80000u)};
    const __m128i zero = _mm_setzero_si128();
    auto ascii = [zero](const uint8_t* from, char16_t* to) {
        const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(x, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 8), _mm_unpackhi_epi8(x, zero));
    };
    ascii(in, out);
    for (int k = 0; k < 4; ++k) {
        out[j[k] - k] = static_cast<char16_t>(((in[j[k]] & 0x1F) << 6) | (in[j[k] + 1] & 0x3F));
        ascii(in + j[k] + 2, out + j[k] - k + 1);
    }
    return (j[0] < 16 ? 1 : 0) + (j[1] < 16 ? 1 : 0) + (j[2] < 16 ? 1 : 0) + (j[3] < 16 ? 1 : 0);
}

// Four three-byte sequences in a row, the bulk of East Asian text: twelve
// bytes checked and decoded together. Needs sixteen readable bytes.
inline bool decodeThreeByteQuad(const uint8_t* in, char16_t* out)
{
    const char l = static_cast<char>(0xF0);
    const char c = static_cast<char>(0xC0);
    const char e = static_cast<char>(0xE0);
    const char k = static_cast<char>(0x80);
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i shape = _mm_and_si128(v, _mm_setr_epi8(l, c, c, l, c, c, l, c, c, l, c, c, 0, 0, 0, 0));
    const __m128i expected = _mm_setr_epi8(e, k, k, e, k, k, e, k, k, e, k, k, 0, 0, 0, 0);
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(shape, expected)) != 0xFFFF) {
        return false;
    }
    // Sequences 0 and 1 in the low quadword, 2 and 3 in the high one, each
    // pair turned into two 16-bit values by shifts and masks.
    const __m128i w = _mm_unpacklo_epi64(v, _mm_srli_si128(v, 6));
    const __m128i first = _mm_or_si128(_mm_or_si128(_mm_and_si128(_mm_slli_epi64(w, 12), _mm_set1_epi64x(0xF000)),
                                                    _mm_and_si128(_mm_srli_epi64(w, 2), _mm_set1_epi64x(0x0FC0))),
                                       _mm_and_si128(_mm_srli_epi64(w, 16), _mm_set1_epi64x(0x003F)));
    const __m128i second = _mm_or_si128(_mm_or_si128(_mm_and_si128(_mm_slli_epi64(w, 4), _mm_set1_epi64x(0xF0000000)),
                                                     _mm_and_si128(_mm_srli_epi64(w, 10), _mm_set1_epi64x(0x0FC00000))),
                                        _mm_and_si128(_mm_srli_epi64(w, 24), _mm_set1_epi64x(0x003F0000)));
    const __m128i units = _mm_shuffle_epi32(_mm_or_si128(first, second), _MM_SHUFFLE(3, 1, 2, 0));
    // Overlong forms have top five bits 00000, surrogates 11011.
    const __m128i top = _mm_srli_epi16(units, 11);
    const __m128i bad =
        _mm_or_si128(_mm_cmpeq_epi16(top, _mm_setzero_si128()), _mm_cmpeq_epi16(top, _mm_set1_epi16(0x1B)));
    if ((_mm_movemask_epi8(bad) & 0xFF) != 0) {
        return false;
    }
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), units);
    return true;
}
#endif

#if QVCL3_CHARSET_SSE2
// Sixteen bytes at a time, widened and stored before looking at them: the
// slots past the ASCII prefix are rewritten by what follows. European and
// East Asian text stay in blocks of their own. False when a sequence needs
// the careful step.
inline bool decodeVectorBlocks(const uint8_t* in, int32_t& ip, int32_t inEnd, char16_t* out, int32_t& op,
                               int32_t outEnd)
{
    const __m128i zero = _mm_setzero_si128();
    while (inEnd - ip >= 16 && outEnd - op >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + ip));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op), _mm_unpacklo_epi8(v, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + op + 8), _mm_unpackhi_epi8(v, zero));
        const int mask = _mm_movemask_epi8(v);
        if (mask == 0) {
            ip += 16;
            op += 16;
            continue;
        }
        const int ascii = detail::lowestBit(static_cast<uint32_t>(mask));
        const uint32_t first = in[ip + ascii];
        if (first >= 0xC2 && first < 0xE0 && inEnd - ip >= 48 && outEnd - op >= 48) {
            // Stay with blocks of sixteen bytes while they hold few enough
            // two-byte sequences and some at all.
            const int32_t start = ip;
            int plainBlocks = 0;
            while (inEnd - ip >= 48 && outEnd - op >= 48 && plainBlocks < 2) {
                int width;
                const int twoByte = decodeLatinBlock(in + ip, out + op, width);
                if (twoByte < 0) {
                    break;
                }
                ip += width;
                op += width - twoByte;
                plainBlocks = twoByte == 0 ? plainBlocks + 1 : 0;
            }
            if (ip != start) {
                continue;
            }
        }
        ip += ascii;
        op += ascii;
        for (;;) {
            while (inEnd - ip >= 16 && outEnd - op >= 4 && decodeThreeByteQuad(in + ip, out + op)) {
                ip += 12;
                op += 4;
            }
            if (inEnd - ip < 4 || outEnd - op < 2 || in[ip] < 0x80) {
                break;
            }
            if (!decodeSequence(in, ip, out, op)) {
                return false;
            }
        }
    }
    return true;
}
#endif

// Anything with room for the longest sequence on both sides.
inline void decodeScalarRun(const uint8_t* in, int32_t& ip, int32_t inEnd, char16_t* out, int32_t& op, int32_t outEnd)
{
    while (inEnd - ip >= 4 && outEnd - op >= 2) {
        if (in[ip] < 0x80) {
            out[op++] = in[ip++];
        } else if (!decodeSequence(in, ip, out, op)) {
            break;
        }
    }
}

// UTF-16 units a sequence of this length decodes to.
inline int32_t unitsFor(int length)
{
    return length == 4 ? 2 : 1;
}

// The rest of a sequence begun by an earlier call. False when the call has
// to stop: the input ends again, or the character does not fit (its last
// byte is then left unconsumed).
template <typename State>
bool continueSequence(detail::Conversion<State>& c, const uint8_t* in, int32_t inEnd, char16_t* out, int32_t outEnd)
{
    State& s = c.state;
    while (s.need != 0) {
        if (c.ip == inEnd) {
            return false;
        }
        // The value is complete with the last byte: a plane above the first
        // needs two units.
        if (s.need == 1 && outEnd - c.op < (s.bits >= 0x400 ? 2 : 1)) {
            return false;
        }
        const uint32_t b = in[c.ip];
        if (b < s.low || b > s.high) {
            throwBadContinuation(b, s.low, s.high);
        }
        ++c.ip;
        s.bits = (s.bits << 6) | (b & 0x3Fu);
        s.low = 0x80;
        s.high = 0xBF;
        --s.need;
    }
    detail::putCodePoint(s.bits, out, c.op, outEnd);
    return true;
}

// One element with every check: the ends of the buffers and errors. A
// sequence cut by the end of the input waits in the state. False when the
// call has to stop.
template <typename State>
bool decodeCheckedSequence(detail::Conversion<State>& c, const uint8_t* in, int32_t inEnd, char16_t* out,
                           int32_t outEnd)
{
    const uint32_t b0 = in[c.ip];
    if (b0 < 0x80) {
        out[c.op++] = static_cast<char16_t>(b0);
        ++c.ip;
        return true;
    }
    const int length = sequenceLength(b0);
    if (length == 0) {
        throwBadLead(b0);
    }
    uint8_t low;
    uint8_t high;
    secondByteRange(b0, low, high);
    uint32_t bits = b0 & (0x7Fu >> length);
    const int available = inEnd - c.ip < length ? inEnd - c.ip : length;
    for (int i = 1; i < available; ++i) {
        const uint32_t b = in[c.ip + i];
        if (b < low || b > high) {
            throwBadContinuation(b, low, high);
        }
        bits = (bits << 6) | (b & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    if (outEnd - c.op < unitsFor(length)) {
        return false;
    }
    if (available < length) {
        c.state.bits = bits;
        c.state.need = static_cast<uint8_t>(length - available);
        c.state.low = low;
        c.state.high = high;
        c.ip = inEnd;
        return false;
    }
    c.ip += length;
    detail::putCodePoint(bits, out, c.op, outEnd);
    return true;
}

} // namespace

BTCUTF8::BTCUTF8() : m_state{0, 0, 0x80, 0xBF} {}

int32_t BTCUTF8::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                         int32_t outEnd)
{
    const uint8_t* in = reinterpret_cast<const uint8_t*>(inBytes);
#if QVCL3_CHARSET_SSE2
    const SimdLevel level = getUtf8SimdLevel();
#endif
    return detail::runConversion(
        m_state, inBytes, inPos, inEnd, out, outPos, outEnd, [&](detail::Conversion<State>& c) {
            if (c.state.need != 0 && !continueSequence(c, in, inEnd, out, outEnd)) {
                return;
            }
            while (c.ip < inEnd && c.op < outEnd) {
#if QVCL3_CHARSET_SSE2
                if (level == SimdLevel::Avx512) {
                    detail::decodeUtf8Avx512(in, c.ip, inEnd, out, c.op, outEnd);
                } else if (level == SimdLevel::Avx2) {
                    detail::decodeUtf8Avx2(in, c.ip, inEnd, out, c.op, outEnd);
                }
                if (level == SimdLevel::Scalar || decodeVectorBlocks(in, c.ip, inEnd, out, c.op, outEnd))
#endif
                {
                    decodeScalarRun(in, c.ip, inEnd, out, c.op, outEnd);
                }
                if (c.ip >= inEnd || c.op >= outEnd || !decodeCheckedSequence(c, in, inEnd, out, outEnd)) {
                    break;
                }
            }
        });
}

int32_t BTCUTF8::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    if (m_state.need != 0) {
        detail::throwInvalidCharacter("Invalid UTF-8: truncated sequence at end of input");
    }
    return 0;
}

void BTCUTF8::reset()
{
    m_state = State{0, 0, 0x80, 0xBF};
}

const char16_t* BTCUTF8::getEncodingName()
{
    return u"UTF-8";
}

int BTCUTF8::getMaxBytesPerChar()
{
    return 3;
}

int BTCUTF8::getMaxCharsPerByte()
{
    return 1;
}

} // namespace qv::text::charset
