#include <qv/text/charset/BTCCodePage.h>

#include <cstdio>

#include "CodePages.h"
#include "ConverterSupport.h"
#include "Iconv.h"

namespace qv::text::charset {

namespace {

using detail::Iconv;

template <typename State>
void dropPending(State& s, int count)
{
    for (int j = count; j < s.pendingCount; ++j) {
        s.pending[j - count] = s.pending[j];
    }
    s.pendingCount = static_cast<uint8_t>(s.pendingCount - count);
}

[[noreturn]] void throwUndefined(uint8_t b, const char* label)
{
    char message[80];
    std::snprintf(message, sizeof message, "Byte 0x%02X starts no character of %s", b, label);
    detail::throwUnmappableCharacter(message);
}

[[noreturn]] void throwIncomplete(const char* label)
{
    char message[80];
    std::snprintf(message, sizeof message, "Incomplete %s character at end of input", label);
    detail::throwUnmappableCharacter(message);
}

struct Call {
    int32_t ip;
    int32_t op;
    int32_t ipStart;
    int32_t opStart;
    bool progress() const { return ip != ipStart || op != opStart; }
};

struct Substitution {
    bool mode;
    int32_t count;
    char16_t unit;
};

// Works off the bytes of a character begun by an earlier call, taking more
// input while it stays incomplete (atEnd: there is no more). False when the
// call has to stop here.
template <typename State>
bool convertPending(Iconv& iconv, State& s, const uint8_t* in, int32_t inEnd, bool atEnd, char16_t* out, int32_t outEnd,
                    Call& call, const Substitution& sub, const char* label)
{
    int appended = 0;
    while (s.pendingCount > 0) {
        if (call.op == outEnd) {
            return false;
        }
        size_t used = 0;
        size_t outOff = static_cast<size_t>(call.op) * 2;
        const Iconv::Status status = iconv.convert(s.pending, used, s.pendingCount, reinterpret_cast<uint8_t*>(out),
                                                   outOff, static_cast<size_t>(outEnd) * 2);
        call.op = static_cast<int32_t>(outOff / 2);
        dropPending(s, static_cast<int>(used));
        if (appended > s.pendingCount) {
            appended = s.pendingCount;
        }
        if (status == Iconv::Status::Done) {
            continue;
        }
        if (status == Iconv::Status::Incomplete && !atEnd && s.pendingCount < sizeof s.pending) {
            if (call.ip == inEnd) {
                return false;
            }
            s.pending[s.pendingCount++] = in[call.ip++];
            ++appended;
            continue;
        }
        if (status == Iconv::Status::OutputFull) {
            return false;
        }
        // The first pending byte starts no character, or the input ended
        // inside one. Bytes taken from this call's input go back to it.
        call.ip -= appended;
        s.pendingCount = static_cast<uint8_t>(s.pendingCount - appended);
        appended = 0;
        const bool truncated = status == Iconv::Status::Incomplete && atEnd;
        if (!sub.mode) {
            if (call.progress()) {
                return false;
            }
            if (truncated) {
                throwIncomplete(label);
            }
            throwUndefined(s.pending[0], label);
        }
        if (call.op == outEnd) {
            return false;
        }
        if (sub.count == 1) {
            out[call.op++] = sub.unit;
        }
        dropPending(s, truncated ? s.pendingCount : 1);
    }
    return true;
}

} // namespace

BTCCodePage::BTCCodePage(uint32_t codePage) : m_info(detail::findCodePage(codePage)), m_state{}
{
    if (m_info == nullptr) {
        char message[64];
        std::snprintf(message, sizeof message, "Code page %u is not supported", static_cast<unsigned>(codePage));
        detail::throwUnknownEncoding(message);
    }
    m_iconv = std::make_unique<Iconv>(m_info->iconvName, detail::hostUtf16Name());
}

BTCCodePage::~BTCCodePage() = default;

int32_t BTCCodePage::convert(const signed char* inBytes, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                             int32_t outEnd)
{
    const uint8_t* in = reinterpret_cast<const uint8_t*>(inBytes);
    uint8_t* outBytes = reinterpret_cast<uint8_t*>(out);
    const size_t outEndBytes = static_cast<size_t>(outEnd) * 2;
    Iconv& iconv = *m_iconv;
    const Substitution sub{substitutionMode, substitutionCount, substitutionChars[0]};
    return detail::runConversion(
        m_state, inBytes, inPos, inEnd, out, outPos, outEnd, [&](detail::Conversion<State>& c) {
            State& s = c.state;
            Call call{c.ip, c.op, c.ip, c.op};

            if (!convertPending(iconv, s, in, inEnd, false, out, outEnd, call, sub, m_info->label)) {
                c.ip = call.ip;
                c.op = call.op;
                return;
            }

            while (call.ip < inEnd && call.op < outEnd) {
                size_t inOff = static_cast<size_t>(call.ip);
                size_t outOff = static_cast<size_t>(call.op) * 2;
                Iconv::Status status =
                    iconv.convert(in, inOff, static_cast<size_t>(inEnd), outBytes, outOff, outEndBytes);
                call.ip = static_cast<int32_t>(inOff);
                call.op = static_cast<int32_t>(outOff / 2);
                if (status == Iconv::Status::Done) {
                    continue;
                }
                if (status == Iconv::Status::OutputFull) {
                    // The next character needs more units than are left.
                    break;
                }
                if (status == Iconv::Status::Incomplete && inEnd - call.ip <= static_cast<int32_t>(sizeof s.pending)) {
                    while (call.ip < inEnd) {
                        s.pending[s.pendingCount++] = in[call.ip++];
                    }
                    continue;
                }
                // A byte that starts no character.
                if (!sub.mode) {
                    if (call.progress()) {
                        break;
                    }
                    throwUndefined(in[call.ip], m_info->label);
                }
                // A character iconv still holds comes before the substitution.
                outOff = static_cast<size_t>(call.op) * 2;
                status = iconv.flush(outBytes, outOff, outEndBytes);
                call.op = static_cast<int32_t>(outOff / 2);
                if (status == Iconv::Status::OutputFull || call.op == outEnd) {
                    break;
                }
                if (sub.count == 1) {
                    out[call.op++] = sub.unit;
                }
                ++call.ip;
            }

            c.ip = call.ip;
            c.op = call.op;
        });
}

int32_t BTCCodePage::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    detail::checkFlushArguments(out, outPos, outEnd);
    const Substitution sub{substitutionMode, substitutionCount, substitutionChars[0]};
    State s = m_state;
    Call call{0, *outPos, 0, *outPos};

    size_t outOff = static_cast<size_t>(call.op) * 2;
    const Iconv::Status status =
        m_iconv->flush(reinterpret_cast<uint8_t*>(out), outOff, static_cast<size_t>(outEnd) * 2);
    call.op = static_cast<int32_t>(outOff / 2);
    if (status != Iconv::Status::OutputFull) {
        convertPending(*m_iconv, s, nullptr, 0, true, out, outEnd, call, sub, m_info->label);
    }

    m_state = s;
    *outPos = call.op;
    return call.op - call.opStart;
}

void BTCCodePage::reset()
{
    m_state = State{};
    m_iconv->reset();
}

const char16_t* BTCCodePage::getEncodingName()
{
    return m_info->name;
}

int BTCCodePage::getMaxBytesPerChar()
{
    return m_info->maxBytesPerChar;
}

int BTCCodePage::getMaxCharsPerByte()
{
    return 1;
}

uint32_t BTCCodePage::getCodePage() const
{
    return m_info->codePage;
}

} // namespace qv::text::charset
