#include <qv/text/charset/CTBCodePage.h>

#include <cstdio>

#include "CodePages.h"
#include "ConverterSupport.h"
#include "Iconv.h"

namespace qv::text::charset {

namespace {

using detail::Iconv;

[[noreturn]] void throwUnmappable(uint32_t c, const char* label)
{
    char message[64];
    std::snprintf(message, sizeof message, "U+%04X has no mapping in %s", static_cast<unsigned>(c), label);
    detail::throwUnmappableCharacter(message);
}

} // namespace

CTBCodePage::CTBCodePage(uint32_t codePage) : m_info(detail::findCodePage(codePage)), m_state{}
{
    if (m_info == nullptr) {
        char message[64];
        std::snprintf(message, sizeof message, "Code page %u is not supported", static_cast<unsigned>(codePage));
        detail::throwUnknownEncoding(message);
    }
    m_iconv = std::make_unique<Iconv>(detail::hostUtf16Name(), m_info->iconvName);
}

CTBCodePage::~CTBCodePage() = default;

int32_t CTBCodePage::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes,
                             int32_t* outPos, int32_t outEnd)
{
    detail::checkConvertArguments(in, inPos, inEnd, outBytes, outPos, outEnd);
    const uint8_t* inBytes = reinterpret_cast<const uint8_t*>(in);
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    Iconv& iconv = *m_iconv;
    State s = m_state;
    const int32_t ipStart = *inPos;
    const int32_t opStart = *outPos;
    int32_t ip = ipStart;
    int32_t op = detail::drainHeld(s, out, opStart, outEnd);

    while (s.heldCount == 0 && ip < inEnd && op < outEnd) {
        // What the next element is, when iconv cannot take it as it comes:
        // a character to convert aside, or one to substitute.
        uint32_t c = in[ip];
        int32_t units = 1;
        const char16_t* element = in + ip;
        char16_t pair[2];
        if (s.high != 0) {
            if (!detail::isLowSurrogate(c)) {
                if (ip != ipStart || op != opStart) {
                    break;
                }
                detail::throwLoneHighSurrogate();
            }
            pair[0] = s.high;
            pair[1] = static_cast<char16_t>(c);
            element = pair;
            units = 2;
            c = detail::combineSurrogates(s.high, c);
        } else {
            size_t inOff = static_cast<size_t>(ip) * 2;
            size_t outOff = static_cast<size_t>(op);
            const Iconv::Status status = iconv.convert(inBytes, inOff, static_cast<size_t>(inEnd) * 2, out, outOff,
                                                       static_cast<size_t>(outEnd));
            ip = static_cast<int32_t>(inOff / 2);
            op = static_cast<int32_t>(outOff);
            if (status == Iconv::Status::Done || op == outEnd) {
                continue;
            }
            if (status == Iconv::Status::Incomplete) {
                s.high = in[ip++];
                continue;
            }
            c = in[ip];
            element = in + ip;
            if (detail::isSurrogate(c)) {
                if (detail::isLowSurrogate(c) || inEnd - ip < 2 || !detail::isLowSurrogate(in[ip + 1])) {
                    if (ip != ipStart || op != opStart) {
                        break;
                    }
                    if (detail::isLowSurrogate(c)) {
                        detail::throwLoneLowSurrogate();
                    }
                    detail::throwLoneHighSurrogate();
                }
                c = detail::combineSurrogates(c, in[ip + 1]);
                units = 2;
            }
        }

        // One character, converted aside so that its bytes can be split.
        uint8_t bytes[8];
        size_t used = 0;
        size_t produced = 0;
        const Iconv::Status status = iconv.convert(reinterpret_cast<const uint8_t*>(element), used,
                                                   static_cast<size_t>(units) * 2, bytes, produced, sizeof bytes);
        if (status == Iconv::Status::Done) {
            op = detail::putHeld(bytes, static_cast<int>(produced), s, out, op, outEnd);
        } else if (!substitutionMode) {
            if (ip != ipStart || op != opStart) {
                break;
            }
            throwUnmappable(c, m_info->label);
        } else if (substitutionCount == 1) {
            out[op++] = static_cast<uint8_t>(substitutionBytes[0]);
        }
        if (s.high != 0) {
            s.high = 0;
            ++ip;
        } else {
            ip += units;
        }
    }

    m_state = s;
    *inPos = ip;
    *outPos = op;
    return op - opStart;
}

int32_t CTBCodePage::flush(signed char* outBytes, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(outBytes, outPos, outEnd);
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    const int32_t start = *outPos;
    int32_t op = detail::drainHeld(m_state, out, start, outEnd);
    if (m_state.heldCount == 0 && m_state.high != 0) {
        if (op != start) {
            *outPos = op;
            return op - start;
        }
        detail::throwHighSurrogateAtEnd();
    }
    if (m_state.heldCount == 0) {
        size_t outOff = static_cast<size_t>(op);
        m_iconv->flush(out, outOff, static_cast<size_t>(outEnd));
        op = static_cast<int32_t>(outOff);
    }
    *outPos = op;
    return op - start;
}

void CTBCodePage::reset()
{
    m_state = State{};
    m_iconv->reset();
}

const char16_t* CTBCodePage::getEncodingName() const
{
    return m_info->name;
}

int CTBCodePage::getMaxBytesPerChar() const
{
    return m_info->maxBytesPerChar;
}

int CTBCodePage::getMaxCharsPerByte() const
{
    return 1;
}

uint32_t CTBCodePage::getCodePage() const
{
    return m_info->codePage;
}

} // namespace qv::text::charset
