#include <qv/io/AlphaNumInputStream.h>

#include <qv/text/charset/CharsetExceptions.h>

#include "io/AlphaNumAlphabet.h"
#include "io/StreamSupport.h"

namespace qv {
namespace io {

namespace {

// Group positions whose character completes a byte.
constexpr bool completesByte(int q)
{
    return q == 1 || q == 3 || q == 4 || q == 6 || q == 7;
}

// How many characters, from group position q on, produce `bytes` bytes.
int64_t charactersFor(int64_t bytes, int q)
{
    int64_t characters = 0;
    while (bytes > 0 && q != 0) {
        bytes -= completesByte(q) ? 1 : 0;
        ++characters;
        q = (q + 1) & 7;
    }
    characters += bytes / 5 * 8;
    bytes %= 5;
    while (bytes > 0) {
        bytes -= completesByte(q) ? 1 : 0;
        ++characters;
        q = (q + 1) & 7;
    }
    return characters;
}

} // namespace

AlphaNumInputStream::AlphaNumInputStream(InputStream* in, const char16_t* alphabet) : FilterInputStream(in)
{
    char16_t characters[32];
    detail::loadAlphabet(alphabet, characters);
    for (signed char& value : m_values)
        value = -1;
    // Backwards, so that a repeated character decodes as its first index; a
    // character above U+00FF never equals an input byte.
    for (int i = 31; i >= 0; --i) {
        if (characters[i] <= 0xFF)
            m_values[characters[i]] = static_cast<signed char>(i);
    }
}

AlphaNumInputStream::~AlphaNumInputStream() = default;

bool AlphaNumInputStream::nextCharacter(unsigned char& character)
{
    if (m_pendingPos >= m_pendingCount) {
        const int32_t wanted = m_wantedChars < 1 ? 1 : m_wantedChars;
        const int32_t n = m_in->read(
            reinterpret_cast<signed char*>(m_pending),
            wanted < static_cast<int32_t>(sizeof m_pending) ? wanted : static_cast<int32_t>(sizeof m_pending));
        if (n < 0)
            return false;
        if (n == 0) {
            // A single-byte read settles what a 0 means, as it would for a
            // character-at-a-time reader.
            const int c = m_in->read();
            if (c < 0)
                return false;
            m_pending[0] = static_cast<unsigned char>(c);
            m_pendingCount = 1;
        } else {
            m_pendingCount = n;
        }
        m_pendingPos = 0;
    }
    character = m_pending[m_pendingPos++];
    --m_wantedChars;
    return true;
}

int32_t AlphaNumInputStream::read(signed char* buffer, int32_t count)
{
    if (count < 1)
        return -1;
    if (!buffer)
        throw ResultException(results::INVALIDARG);
    const int64_t wanted = charactersFor(count, m_groupPos);
    m_wantedChars = wanted > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<int32_t>(wanted);
    int32_t produced = 0;
    unsigned a = m_assembled;
    int q = m_groupPos;
    unsigned char character;
    while (produced < count) {
        // A whole group of valid characters in hand at a group boundary: the
        // 40 bits at once. Anything else (an invalid character included)
        // takes the character-by-character path below.
        if (q == 0 && count - produced >= 5 && m_pendingCount - m_pendingPos >= 8) {
            const unsigned char* g = m_pending + m_pendingPos;
            uint64_t bits = 0;
            int invalid = 0;
            for (int k = 0; k < 8; ++k) {
                const int v = m_values[g[k]];
                invalid |= v;
                bits = (bits << 5) | static_cast<unsigned>(v & 31);
            }
            if (invalid >= 0) {
                for (int k = 0; k < 5; ++k)
                    buffer[produced + k] = static_cast<signed char>(bits >> (32 - 8 * k));
                produced += 5;
                m_pendingPos += 8;
                m_wantedChars -= 8;
                continue;
            }
        }
        if (!nextCharacter(character)) {
            if (q != 0) {
                buffer[produced++] = static_cast<signed char>(a);
                a = 0;
                q = 0;
            }
            break;
        }
        const int value = m_values[character];
        if (value < 0) {
            m_assembled = a;
            m_groupPos = q;
            throw text::charset::InvalidCharacterException(u"Invalid AlphaNum character");
        }
        const unsigned v = static_cast<unsigned>(value);
        switch (q) {
        case 0: a = (v << 3) & 0xFF; break;
        case 1:
            buffer[produced++] = static_cast<signed char>((v >> 2) | a);
            a = (v << 6) & 0xFF;
            break;
        case 2: a |= (v << 1) & 0xFF; break;
        case 3:
            buffer[produced++] = static_cast<signed char>((v >> 4) | a);
            a = (v << 4) & 0xFF;
            break;
        case 4:
            buffer[produced++] = static_cast<signed char>((v >> 1) | a);
            a = (v << 7) & 0xFF;
            break;
        case 5: a |= (v << 2) & 0xFF; break;
        case 6:
            buffer[produced++] = static_cast<signed char>((v >> 3) | a);
            a = (v << 5) & 0xFF;
            break;
        default:
            buffer[produced++] = static_cast<signed char>(a | v);
            a = 0;
            break;
        }
        q = (q + 1) & 7;
    }
    m_assembled = a;
    m_groupPos = q;
    return produced > 0 ? produced : -1;
}

int AlphaNumInputStream::read()
{
    return InputStream::read();
}

int32_t AlphaNumInputStream::skip(int32_t count)
{
    return InputStream::skip(count);
}

int32_t AlphaNumInputStream::available()
{
    return InputStream::available();
}

bool AlphaNumInputStream::markSupported()
{
    return false;
}

void AlphaNumInputStream::mark(int32_t) {}

void AlphaNumInputStream::reset()
{
    InputStream::reset();
}

} // namespace io
} // namespace qv
