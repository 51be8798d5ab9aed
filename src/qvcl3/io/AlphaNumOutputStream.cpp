#include <qv/io/AlphaNumOutputStream.h>

#include "io/AlphaNumAlphabet.h"
#include "io/StreamSupport.h"

#include <cstring>

namespace qv {
namespace io {

AlphaNumOutputStream::AlphaNumOutputStream(OutputStream* out, const char16_t* alphabet) : FilterOutputStream(out)
{
    char16_t characters[32];
    detail::loadAlphabet(alphabet, characters);
    for (int i = 0; i < 32; ++i)
        m_alphabet[i] = static_cast<signed char>(characters[i] & 0xFF);
}

AlphaNumOutputStream::~AlphaNumOutputStream() = default;

// The characters of a whole request are collected and passed on in blocks,
// not one call per character; the bytes are the same.
void AlphaNumOutputStream::write(const signed char* buffer, int32_t count)
{
    if (count < 1)
        return;
    if (!buffer)
        throw ResultException(results::INVALIDARG);
    constexpr int32_t kBlock = 8192;
    signed char text[kBlock + 8];
    int32_t length = 0;
    unsigned previous = m_previous;
    int p = m_groupPos;
    constexpr int32_t kPairsWorthIt = 4096;
    signed char pairs[1024][2];
    bool pairsReady = false;
    for (int32_t i = 0; i < count; ++i) {
        // Whole groups at a group boundary: 40 bits at once, two characters
        // a lookup when the write is long enough to pay for the pair table.
        if (p == 0 && count - i >= 5) {
            if (!pairsReady && count - i >= kPairsWorthIt) {
                for (int index = 0; index < 1024; ++index) {
                    pairs[index][0] = m_alphabet[index >> 5];
                    pairs[index][1] = m_alphabet[index & 31];
                }
                pairsReady = true;
            }
            while (count - i >= 5) {
                if (length > kBlock - 8) {
                    m_previous = previous;
                    m_groupPos = p;
                    m_out->write(text, length);
                    length = 0;
                }
                const unsigned char* g = reinterpret_cast<const unsigned char*>(buffer + i);
                const uint64_t bits = (uint64_t(g[0]) << 32) | (uint64_t(g[1]) << 24) | (uint64_t(g[2]) << 16) |
                                      (uint64_t(g[3]) << 8) | g[4];
                if (pairsReady) {
                    for (int k = 0; k < 4; ++k)
                        std::memcpy(text + length + 2 * k, pairs[(bits >> (30 - 10 * k)) & 1023], 2);
                } else {
                    for (int k = 0; k < 8; ++k)
                        text[length + k] = m_alphabet[(bits >> (35 - 5 * k)) & 31];
                }
                length += 8;
                previous = g[4];
                i += 5;
            }
            if (i == count)
                break;
        }
        const unsigned b = static_cast<unsigned char>(buffer[i]);
        switch (p) {
        case 0:
            text[length++] = m_alphabet[b >> 3];
            p = 1;
            break;
        case 1:
            text[length++] = m_alphabet[((previous & 7) << 2) | (b >> 6)];
            text[length++] = m_alphabet[(b >> 1) & 31];
            p = 3;
            break;
        case 3:
            text[length++] = m_alphabet[((previous & 1) << 4) | (b >> 4)];
            p = 4;
            break;
        case 4:
            text[length++] = m_alphabet[((previous & 15) << 1) | (b >> 7)];
            text[length++] = m_alphabet[(b >> 2) & 31];
            p = 6;
            break;
        default:
            text[length++] = m_alphabet[((previous & 3) << 3) | (b >> 5)];
            text[length++] = m_alphabet[b & 31];
            p = 0;
            break;
        }
        previous = b;
        if (length >= kBlock) {
            m_previous = previous;
            m_groupPos = p;
            m_out->write(text, length);
            length = 0;
        }
    }
    m_previous = previous;
    m_groupPos = p;
    if (length > 0)
        m_out->write(text, length);
}

void AlphaNumOutputStream::write(signed char byte)
{
    write(&byte, 1);
}

void AlphaNumOutputStream::flush()
{
    if (m_groupPos != 0) {
        unsigned v = 0;
        switch (m_groupPos) {
        case 1: v = (m_previous & 7) << 2; break;
        case 3: v = (m_previous & 1) << 4; break;
        case 4: v = (m_previous & 15) << 1; break;
        default: v = (m_previous & 3) << 3; break;
        }
        m_groupPos = 0;
        m_previous = 0;
        m_out->write(m_alphabet[v]);
    }
    m_out->flush();
}

void AlphaNumOutputStream::close()
{
    detail::finishThenClose([this] { flush(); }, [this] { m_out->close(); });
}

} // namespace io
} // namespace qv
