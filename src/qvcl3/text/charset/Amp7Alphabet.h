#ifndef QVCL3_TEXT_CHARSET_AMP7ALPHABET_H
#define QVCL3_TEXT_CHARSET_AMP7ALPHABET_H

// What the AMP-7 encoder and decoder share: the base64 alphabet of its
// shifted runs and the characters written as themselves; not installed.

#include <cstdint>

namespace qv::text::charset::detail {

inline constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+,";

inline int digitValue(uint32_t b)
{
    if (b >= 'A' && b <= 'Z') {
        return static_cast<int>(b - 'A');
    }
    if (b >= 'a' && b <= 'z') {
        return static_cast<int>(b - 'a' + 26);
    }
    if (b >= '0' && b <= '9') {
        return static_cast<int>(b - '0' + 52);
    }
    if (b == '+') {
        return 62;
    }
    return b == ',' ? 63 : -1;
}

inline bool isDirect(uint32_t c)
{
    return c >= 0x20 && c <= 0x7E;
}

} // namespace qv::text::charset::detail

#endif
