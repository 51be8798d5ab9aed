#ifndef QVCL3_FUZZ_STREAMFUZZSUPPORT_H
#define QVCL3_FUZZ_STREAMFUZZSUPPORT_H

// A source for the stream targets that hands out the fuzzer's bytes a few at
// a time, as a pipe or socket does.

#include "FuzzSupport.h"

#include <algorithm>

namespace fuzz {

class ChunkedInput : public qv::io::InputStream {
public:
    ChunkedInput(const uint8_t* data, size_t size, int32_t chunk, bool tellAvailable)
        : m_data(data), m_size(size), m_chunk(chunk < 1 ? 1 : chunk), m_tellAvailable(tellAvailable)
    {}
    using qv::io::InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override
    {
        if (count < 1)
            return 0;
        if (m_pos >= m_size)
            return -1;
        const size_t n = std::min({static_cast<size_t>(count), static_cast<size_t>(m_chunk), m_size - m_pos});
        std::copy(m_data + m_pos, m_data + m_pos + n, reinterpret_cast<uint8_t*>(buffer));
        m_pos += n;
        return static_cast<int32_t>(n);
    }
    int32_t available() override { return m_tellAvailable ? static_cast<int32_t>(m_size - m_pos) : 0; }
    size_t position() const { return m_pos; }

private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_pos = 0;
    int32_t m_chunk;
    bool m_tellAvailable;
};

} // namespace fuzz

#endif
