#ifndef QVCL3_TEXT_CHARSET_ICONV_H
#define QVCL3_TEXT_CHARSET_ICONV_H

#include <cstddef>
#include <cstdint>

namespace qv::text::charset::detail {

// The one place where the library uses glibc's iconv (its gconv modules
// convert the legacy code pages). iconv is a C library call, not a system
// call, so it may live here rather than in the platform layer; keeping it in
// one class keeps the code-page converters free of it and leaves a single
// spot to replace on a platform without iconv.
class Iconv {
public:
    enum class Status { Done, OutputFull, Incomplete, Invalid };

    // Throws UnknownEncodingException when glibc cannot convert between the
    // two, std::bad_alloc when it runs out of memory.
    Iconv(const char* from, const char* to);
    ~Iconv();
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    // Converts in[inPos, inEnd) to out[outPos, outEnd) (byte offsets) and
    // advances both offsets past what was consumed and produced. Invalid and
    // Incomplete leave inPos at the offending input.
    Status convert(const uint8_t* in, size_t& inPos, size_t inEnd, uint8_t* out, size_t& outPos, size_t outEnd);
    // Writes whatever a stateful conversion still holds and returns to the
    // initial state; OutputFull when that does not fit.
    Status flush(uint8_t* out, size_t& outPos, size_t outEnd);
    // Returns to the initial state, dropping what it holds.
    void reset();

    // Whether the host stores a char16_t little-endian: the byte order of the
    // "UTF-16" side of the code-page conversions.
    static bool hostIsLittleEndian();

private:
    void* m_descriptor;
};

} // namespace qv::text::charset::detail

#endif
