#ifndef QVCL3_TEXT_CHARSET_SINGLEBYTECODES_H
#define QVCL3_TEXT_CHARSET_SINGLEBYTECODES_H

#include <cstdint>

namespace qv::text::charset::detail {

// One single-byte code page, both directions. Bytes below identityBelow
// stand for the code point of the same value, which lets the converters
// move them in blocks.
struct SingleByteCode {
    const char16_t* name;
    const char* label; // the name again, for messages
    uint32_t identityBelow;
    char16_t toUnicode[256]; // U+FFFD where the byte is undefined
    int reverseCount;
    uint32_t reverse[128]; // (code point << 8) | byte for bytes from identityBelow on, ascending
};

extern const SingleByteCode asciiCode;
extern const SingleByteCode latin1Code;
extern const SingleByteCode cp437Code;
extern const SingleByteCode cp1252Code;

// The byte for c, or -1.
inline int findByte(const SingleByteCode& code, uint32_t c)
{
    if (c < code.identityBelow) {
        return static_cast<int>(c);
    }
    int low = 0;
    int high = code.reverseCount;
    const uint32_t key = c << 8;
    while (low < high) {
        const int mid = (low + high) / 2;
        if ((code.reverse[mid] & ~0xFFu) < key) {
            low = mid + 1;
        } else {
            high = mid;
        }
    }
    if (low < code.reverseCount && (code.reverse[low] & ~0xFFu) == key) {
        return static_cast<int>(code.reverse[low] & 0xFF);
    }
    return -1;
}

} // namespace qv::text::charset::detail

#endif
