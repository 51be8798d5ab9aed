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

int32_t CTBCodePage::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* outBytes, int32_t* outPos,
                             int32_t outEnd)
{
    const uint8_t* inBytes = reinterpret_cast<const uint8_t*>(in);
    uint8_t* out = reinterpret_cast<uint8_t*>(outBytes);
    Iconv& iconv = *m_iconv;
    return detail::runConversion(
        m_state, in, inPos, inEnd, outBytes, outPos, outEnd, [&](detail::Conversion<State>& c) {
            const int32_t ipStart = c.ip;
            const int32_t opStart = c.op;
            // A rejected element throws only when it comes first: the caller
            // then gets the positions where it lies.
            auto firstInCall = [&] { return c.ip == ipStart && c.op == opStart; };
            while (c.ip < inEnd && c.op < outEnd) {
                // What the next element is, when iconv cannot take it as it
                // comes: a character to convert aside, or one to substitute.
                uint32_t ch = in[c.ip];
                int32_t units = 1;
                int32_t consumed = 1;
                const char16_t* element = in + c.ip;
                char16_t pair[2];
                if (c.state.high != 0) {
                    if (!detail::isLowSurrogate(ch)) {
                        if (!firstInCall()) {
                            break;
                        }
                        detail::throwLoneHighSurrogate();
                    }
                    pair[0] = c.state.high;
                    pair[1] = static_cast<char16_t>(ch);
                    element = pair;
                    units = 2;
                    ch = detail::combineSurrogates(c.state.high, ch);
                } else {
                    size_t inOff = static_cast<size_t>(c.ip) * 2;
                    size_t outOff = static_cast<size_t>(c.op);
                    const Iconv::Status status = iconv.convert(inBytes, inOff, static_cast<size_t>(inEnd) * 2, out,
                                                               outOff, static_cast<size_t>(outEnd));
                    c.ip = static_cast<int32_t>(inOff / 2);
                    c.op = static_cast<int32_t>(outOff);
                    if (status == Iconv::Status::Done || c.op == outEnd) {
                        continue;
                    }
                    if (status == Iconv::Status::OutputFull) {
                        break;
                    }
                    if (status == Iconv::Status::Incomplete) {
                        c.state.high = in[c.ip++];
                        continue;
                    }
                    ch = in[c.ip];
                    element = in + c.ip;
                    if (detail::isSurrogate(ch)) {
                        if (detail::isLowSurrogate(ch) || inEnd - c.ip < 2 || !detail::isLowSurrogate(in[c.ip + 1])) {
                            if (!firstInCall()) {
                                break;
                            }
                            if (detail::isLowSurrogate(ch)) {
                                detail::throwLoneLowSurrogate();
                            }
                            detail::throwLoneHighSurrogate();
                        }
                        ch = detail::combineSurrogates(ch, in[c.ip + 1]);
                        units = 2;
                        consumed = 2;
                    }
                }

                // One character, converted aside.
                uint8_t bytes[8];
                size_t used = 0;
                size_t produced = 0;
                const Iconv::Status status =
                    iconv.convert(reinterpret_cast<const uint8_t*>(element), used, static_cast<size_t>(units) * 2,
                                  bytes, produced, sizeof bytes);
                if (status == Iconv::Status::Done) {
                    if (!detail::putWhole(bytes, static_cast<int>(produced), out, c.op, outEnd)) {
                        break;
                    }
                } else if (!substitutionMode) {
                    if (!firstInCall()) {
                        break;
                    }
                    throwUnmappable(ch, m_info->label);
                } else if (substitutionCount == 1) {
                    out[c.op++] = static_cast<uint8_t>(substitutionBytes[0]);
                }
                c.state.high = 0;
                c.ip += consumed;
            }
        });
}

int32_t CTBCodePage::flush(signed char* outBytes, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(outBytes, outPos, outEnd);
    if (m_state.high != 0) {
        detail::throwHighSurrogateAtEnd();
    }
    const int32_t start = *outPos;
    size_t outOff = static_cast<size_t>(start);
    m_iconv->flush(reinterpret_cast<uint8_t*>(outBytes), outOff, static_cast<size_t>(outEnd));
    *outPos = static_cast<int32_t>(outOff);
    return *outPos - start;
}

void CTBCodePage::reset()
{
    m_state = State{};
    m_iconv->reset();
}

const char16_t* CTBCodePage::getEncodingName()
{
    return m_info->name;
}

int CTBCodePage::getMaxBytesPerChar()
{
    return m_info->maxBytesPerChar;
}

int CTBCodePage::getMaxCharsPerByte()
{
    return 1;
}

uint32_t CTBCodePage::getCodePage() const
{
    return m_info->codePage;
}

} // namespace qv::text::charset
