#include "net/AddressText.h"

#include <net/if.h>

#include <cstring>

namespace qv {
namespace net {
namespace detail {

namespace {

bool parseScope(const char* text, size_t length, uint32_t* scopeId) noexcept
{
    if (length == 0)
        return false;
    bool numeric = true;
    uint64_t value = 0;
    for (size_t i = 0; i < length && numeric; ++i) {
        if (text[i] < '0' || text[i] > '9')
            numeric = false;
        else
            value = value * 10 + static_cast<uint64_t>(text[i] - '0');
        if (value > 0xFFFFFFFFu)
            return false;
    }
    if (numeric) {
        *scopeId = static_cast<uint32_t>(value);
        return true;
    }
    char name[IF_NAMESIZE];
    if (length >= sizeof name || std::memchr(text, '\0', length) != nullptr)
        return false;
    std::memcpy(name, text, length);
    name[length] = '\0';
    const unsigned index = if_nametoindex(name);
    if (index == 0)
        return false;
    *scopeId = index;
    return true;
}

size_t putDecimal(unsigned value, char* out) noexcept
{
    char digits[10];
    size_t n = 0;
    do {
        digits[n++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    for (size_t i = 0; i < n; ++i)
        out[i] = digits[n - 1 - i];
    return n;
}

} // namespace

int hexValue(char c) noexcept
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool parseIPv4(const char* text, size_t length, uint8_t out[4]) noexcept
{
    uint8_t bytes[4];
    size_t i = 0;
    for (int part = 0; part < 4; ++part) {
        if (part > 0) {
            if (i >= length || text[i] != '.')
                return false;
            ++i;
        }
        const size_t start = i;
        unsigned value = 0;
        while (i < length && text[i] >= '0' && text[i] <= '9' && i - start < 3) {
            value = value * 10 + static_cast<unsigned>(text[i] - '0');
            ++i;
        }
        const size_t digits = i - start;
        if (digits == 0 || value > 255 || (digits > 1 && text[start] == '0'))
            return false;
        bytes[part] = static_cast<uint8_t>(value);
    }
    if (i != length)
        return false;
    std::memcpy(out, bytes, 4);
    return true;
}

bool parseIPv6(const char* text, size_t length, uint8_t out[16], uint32_t* scopeId) noexcept
{
    const char* percent = static_cast<const char*>(std::memchr(text, '%', length));
    uint32_t scope = 0;
    if (percent != nullptr) {
        const size_t zoneStart = static_cast<size_t>(percent - text) + 1;
        if (scopeId == nullptr || !parseScope(text + zoneStart, length - zoneStart, &scope))
            return false;
        length = zoneStart - 1;
    }
    uint16_t groups[8] = {};
    int count = 0;
    int gap = -1; // index of the group where "::" stands
    size_t i = 0;
    if (length >= 2 && text[0] == ':' && text[1] == ':') {
        gap = 0;
        i = 2;
    } else if (length == 0 || text[0] == ':') {
        return false;
    }
    while (i < length) {
        if (count == 8)
            return false;
        const size_t start = i;
        unsigned value = 0;
        while (i < length && i - start < 5 && hexValue(text[i]) >= 0) {
            value = value * 16 + static_cast<unsigned>(hexValue(text[i]));
            ++i;
        }
        if (i < length && text[i] == '.') {
            // A dotted quad closes the address and fills two groups.
            uint8_t quad[4];
            if (count > 6 || !parseIPv4(text + start, length - start, quad))
                return false;
            groups[count++] = static_cast<uint16_t>(quad[0] << 8 | quad[1]);
            groups[count++] = static_cast<uint16_t>(quad[2] << 8 | quad[3]);
            i = length;
            break;
        }
        const size_t digits = i - start;
        if (digits == 0 || digits > 4)
            return false;
        groups[count++] = static_cast<uint16_t>(value);
        if (i == length)
            break;
        if (text[i] != ':')
            return false;
        ++i;
        if (i < length && text[i] == ':') {
            if (gap >= 0)
                return false;
            gap = count;
            ++i;
        } else if (i == length) {
            return false;
        }
    }
    if (gap >= 0 ? count > 7 : count != 8)
        return false;
    uint8_t bytes[16] = {};
    const int tail = gap >= 0 ? count - gap : 0;
    for (int g = 0; g < count; ++g) {
        const int slot = gap >= 0 && g >= gap ? 8 - tail + (g - gap) : g;
        bytes[2 * slot] = static_cast<uint8_t>(groups[g] >> 8);
        bytes[2 * slot + 1] = static_cast<uint8_t>(groups[g]);
    }
    std::memcpy(out, bytes, 16);
    if (scopeId != nullptr)
        *scopeId = scope;
    return true;
}

size_t formatIPv4(const uint8_t bytes[4], char* out) noexcept
{
    size_t n = 0;
    for (int part = 0; part < 4; ++part) {
        if (part > 0)
            out[n++] = '.';
        n += putDecimal(bytes[part], out + n);
    }
    return n;
}

size_t formatIPv6(const uint8_t bytes[16], uint32_t scopeId, char* out) noexcept
{
    static const char kHex[] = "0123456789abcdef";
    static const uint8_t kMapped[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    size_t n = 0;
    if (std::memcmp(bytes, kMapped, 12) == 0) {
        std::memcpy(out, "::ffff:", 7);
        n = 7 + formatIPv4(bytes + 12, out + 7);
    } else {
        uint16_t groups[8];
        for (int g = 0; g < 8; ++g)
            groups[g] = static_cast<uint16_t>(bytes[2 * g] << 8 | bytes[2 * g + 1]);
        int bestStart = -1;
        int bestLength = 1; // a single zero group is never shortened
        for (int g = 0; g < 8;) {
            if (groups[g] != 0) {
                ++g;
                continue;
            }
            int end = g;
            while (end < 8 && groups[end] == 0)
                ++end;
            if (end - g > bestLength) {
                bestStart = g;
                bestLength = end - g;
            }
            g = end;
        }
        for (int g = 0; g < 8; ++g) {
            if (g == bestStart) {
                out[n++] = ':';
                out[n++] = ':';
                g += bestLength - 1;
                continue;
            }
            if (g > 0 && g != bestStart + bestLength)
                out[n++] = ':';
            bool started = false;
            for (int shift = 12; shift >= 0; shift -= 4) {
                const unsigned digit = (groups[g] >> shift) & 0xF;
                if (digit != 0 || started || shift == 0) {
                    out[n++] = kHex[digit];
                    started = true;
                }
            }
        }
    }
    if (scopeId != 0) {
        out[n++] = '%';
        n += putDecimal(scopeId, out + n);
    }
    return n;
}

} // namespace detail
} // namespace net
} // namespace qv
