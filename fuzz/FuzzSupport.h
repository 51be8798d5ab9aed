#ifndef QVCL3_FUZZ_FUZZSUPPORT_H
#define QVCL3_FUZZ_FUZZSUPPORT_H

// Drivers shared by the libFuzzer targets: whole-input and split conversions,
// with every breach of the conversion contract turned into an abort.

#include <qv/qvcl3.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace fuzz {

using namespace qv::text::charset;

[[noreturn]] inline void fail(const char* what)
{
    std::fprintf(stderr, "contract broken: %s\n", what);
    std::abort();
}

inline void check(bool condition, const char* what)
{
    if (!condition) {
        fail(what);
    }
}

// Split sizes and options taken from the front of the input.
class Reader {
public:
    Reader(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
    uint8_t byte()
    {
        if (m_size == 0) {
            return 0;
        }
        --m_size;
        return *m_data++;
    }
    // 1..16, or everything at once for the high values.
    int step()
    {
        const int b = byte();
        return b >= 0xF0 ? 1 << 30 : 1 + b % 16;
    }
    const uint8_t* data() const { return m_data; }
    size_t size() const { return m_size; }

private:
    const uint8_t* m_data;
    size_t m_size;
};

template <typename Out>
struct Result {
    bool ok = false;
    std::basic_string<Out> output;
    bool operator==(const Result& other) const { return ok == other.ok && (!ok || output == other.output); }
};

// Output elements of the longest character any converter writes at once.
constexpr int32_t longestCharacter = 16;

// Converts all of in through c, at most inStep elements and outStep slots
// per call (more, one slot at a time, while the next character does not fit
// whole), then flushes. ok is false when the converter rejected the input
// with one of its two exceptions.
template <typename Converter, typename In, typename Out>
Result<Out> run(Converter& c, const In* in, int32_t size, int inStep, int outStep)
{
    Result<Out> result;
    std::vector<Out> out(static_cast<size_t>(size) * 8 + 16);
    const int32_t capacity = static_cast<int32_t>(out.size());
    int32_t ip = 0;
    int32_t op = 0;
    bool stoppedEarly = false;
    int32_t window = outStep;
    try {
        while (ip < size) {
            const int32_t inEnd = size - ip > inStep ? ip + inStep : size;
            const int32_t outEnd = capacity - op > window ? op + window : capacity;
            const int32_t before = op;
            const int32_t beforeIn = ip;
            const int32_t written = c.convert(in, &ip, inEnd, out.data(), &op, outEnd);
            check(written == op - before, "return value is not the number written");
            check(ip >= beforeIn && ip <= inEnd && op >= before && op <= outEnd, "positions out of range");
            if (ip != inEnd && op != outEnd && outEnd - op < longestCharacter && outEnd < capacity) {
                // The next character does not fit whole: one more slot.
                window = outEnd - op + 1;
                continue;
            }
            window = outStep;
            if (ip != inEnd && op != outEnd) {
                // Allowed once, just before an element the next call rejects.
                check(!stoppedEarly, "stopped early twice without throwing");
                stoppedEarly = true;
            } else {
                stoppedEarly = false;
            }
        }
        for (int guard = 0;; ++guard) {
            check(guard < size * 8 + 64, "flush never finishes");
            const int32_t outEnd = capacity - op > outStep ? op + outStep : capacity;
            const int32_t before = op;
            const int32_t written = c.flush(out.data(), &op, outEnd);
            check(written == op - before && op <= outEnd, "flush breaks the contract");
            if (written == 0 && op < outEnd) {
                break;
            }
            check(op < capacity, "output larger than eight elements per input element");
        }
    } catch (const InvalidCharacterException&) {
        return result;
    } catch (const UnmappableCharacterException&) {
        return result;
    }
    result.ok = true;
    result.output.assign(out.data(), static_cast<size_t>(op));
    return result;
}

inline Result<char16_t> decode(ByteToCharConverter& c, const std::string& bytes, int inStep = 1 << 30,
                               int outStep = 1 << 30)
{
    c.reset();
    return run<ByteToCharConverter, signed char, char16_t>(c, reinterpret_cast<const signed char*>(bytes.data()),
                                                           static_cast<int32_t>(bytes.size()), inStep, outStep);
}

inline Result<signed char> encode(CharToByteConverter& c, const std::u16string& text, int inStep = 1 << 30,
                                  int outStep = 1 << 30)
{
    c.reset();
    return run<CharToByteConverter, char16_t, signed char>(c, text.data(), static_cast<int32_t>(text.size()), inStep,
                                                           outStep);
}

inline std::string bytesOf(const Result<signed char>& r)
{
    return std::string(reinterpret_cast<const char*>(r.output.data()), r.output.size());
}

inline std::string asBytes(const Reader& r)
{
    return std::string(reinterpret_cast<const char*>(r.data()), r.size());
}

inline std::u16string asUnits(const Reader& r)
{
    std::u16string units(r.size() / 2, u'\0');
    for (size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<char16_t>(r.data()[2 * i] | (r.data()[2 * i + 1] << 8));
    }
    return units;
}

// Whole and split conversions agree in both directions; returns the whole
// results for target-specific checks.
inline void checkSplits(ByteToCharConverter& decoder, CharToByteConverter& encoder, Reader& reader,
                        Result<char16_t>& decoded, Result<signed char>& encoded)
{
    const int inStep = reader.step();
    const int outStep = reader.step();
    const std::string bytes = asBytes(reader);
    decoded = decode(decoder, bytes);
    check(decode(decoder, bytes, inStep, outStep) == decoded, "split decoding differs from whole decoding");
    const std::u16string units = asUnits(reader);
    encoded = encode(encoder, units);
    check(encode(encoder, units, inStep, outStep) == encoded, "split encoding differs from whole encoding");
}

} // namespace fuzz

#endif
