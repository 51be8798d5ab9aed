#ifndef QVCL3_TESTS_CHARSET_CONVERTERHARNESS_H
#define QVCL3_TESTS_CHARSET_CONVERTERHARNESS_H

#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include "Thrown.h"

#include <climits>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace charset_test {

using namespace qv::text::charset;

using Bytes = std::string;
using Text = std::u16string;
using RangeError = qv::RangeErrorException;

// The message of a library exception; the converters' messages are ASCII.
inline std::string messageOf(const qv::Exception& e)
{
    const qv::String description = e.getDescription();
    const char16_t* text = description.getData();
    std::string message;
    for (int32_t i = 0; i < description.getLength(); ++i) {
        message += text[i] < 0x80 ? static_cast<char>(text[i]) : '?';
    }
    return message;
}

// Output elements of the longest character any converter writes at once.
constexpr int32_t longestCharacter = 16;

// Runs a converter over size input elements, giving it at most inStep of
// them and outStep output slots per call, then flushes. Checks the
// conversion contract on every call: the return value is the number of
// elements written, and a call stops only when its input window is used up,
// its output window is full or the next character does not fit in what is
// left of it (the window then grows one slot at a time until it does).
template <class CodePage, class Converter, class In, class Out>
std::vector<Out> convertAll(Converter& c, const In* in, int32_t size, size_t capacity, int inStep, int outStep)
{
    std::vector<Out> out(capacity);
    const int32_t end = static_cast<int32_t>(capacity);
    int32_t ip = 0;
    int32_t op = 0;
    int32_t window = outStep;
    while (ip < size) {
        const int32_t inEnd = size - ip > inStep ? ip + inStep : size;
        const int32_t outEnd = end - op > window ? op + window : end;
        const int32_t before = op;
        const int32_t written = c.convert(in, &ip, inEnd, out.data(), &op, outEnd);
        EXPECT_EQ(written, op - before);
        if (ip != inEnd && op != outEnd && outEnd - op < longestCharacter && outEnd < end) {
            window = outEnd - op + 1;
            continue;
        }
        window = outStep;
        if (ip != inEnd && op != outEnd) {
            // Only the code-page converters stop early, just before an element
            // they are about to reject; the next call must throw.
            const int32_t ipStopped = ip;
            const int32_t opStopped = op;
            EXPECT_TRUE(dynamic_cast<CodePage*>(&c) != nullptr) << "stopped early at input " << ip << ", output " << op;
            c.convert(in, &ip, inEnd, out.data(), &op, outEnd);
            ADD_FAILURE() << "a call that stopped early at input " << ipStopped << ", output " << opStopped
                          << " was followed by one that did not throw";
            break;
        }
    }
    for (;;) {
        const int32_t outEnd = end - op > outStep ? op + outStep : end;
        const int32_t before = op;
        const int32_t written = c.flush(out.data(), &op, outEnd);
        EXPECT_EQ(written, op - before);
        if (written == 0) {
            break;
        }
    }
    out.resize(static_cast<size_t>(op));
    return out;
}

inline Text decodeAll(ByteToCharConverter& c, const Bytes& bytes, int inStep = INT_MAX, int outStep = INT_MAX)
{
    const std::vector<char16_t> out = convertAll<BTCCodePage, ByteToCharConverter, signed char, char16_t>(
        c, reinterpret_cast<const signed char*>(bytes.data()), static_cast<int32_t>(bytes.size()),
        bytes.size() * 2 + 16, inStep, outStep);
    return Text(out.begin(), out.end());
}

inline Bytes encodeAll(CharToByteConverter& c, const Text& text, int inStep = INT_MAX, int outStep = INT_MAX)
{
    const std::vector<signed char> out = convertAll<CTBCodePage, CharToByteConverter, char16_t, signed char>(
        c, text.data(), static_cast<int32_t>(text.size()), text.size() * 8 + 16, inStep, outStep);
    return Bytes(out.begin(), out.end());
}

// UTF-16LE bytes of a text, as iconv takes them.
inline std::string toUtf16le(const Text& text)
{
    std::string bytes;
    for (char16_t u : text) {
        bytes += static_cast<char>(u & 0xFF);
        bytes += static_cast<char>(u >> 8);
    }
    return bytes;
}

// UTF-16 of a sequence of code points.
inline Text utf16(std::initializer_list<char32_t> cps)
{
    Text t;
    for (char32_t cp : cps) {
        if (cp >= 0x10000) {
            t += static_cast<char16_t>(0xD7C0 + (cp >> 10));
            t += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        } else {
            t += static_cast<char16_t>(cp);
        }
    }
    return t;
}

struct Codec {
    std::string name;
    std::function<std::unique_ptr<ByteToCharConverter>()> decoder;
    std::function<std::unique_ptr<CharToByteConverter>()> encoder;
};

// Every converter pair of the library, the code pages included.
std::vector<Codec> allCodecs();

// The code pages converted through iconv, with the names iconv knows them by.
struct CodePageName {
    uint32_t codePage;
    const char* iconvName;
};
const std::vector<CodePageName>& codePageNames();

// glibc's iconv as an independent oracle.
class IconvOracle {
public:
    IconvOracle(const char* from, const char* to);
    ~IconvOracle();
    IconvOracle(const IconvOracle&) = delete;
    IconvOracle& operator=(const IconvOracle&) = delete;

    // Converts all of input from the initial state and flushes; false on any
    // invalid or incomplete input.
    bool convert(const std::string& input, std::string& output);
    // Converts each element of unitSize input bytes on its own (for
    // stateless targets), writing mark for those the target cannot represent.
    bool convertMarking(const std::string& input, size_t unitSize, char mark, std::string& output);

private:
    void* m_cd;
};

} // namespace charset_test

#endif
