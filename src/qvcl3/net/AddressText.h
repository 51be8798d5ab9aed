#ifndef QVCL3_NET_ADDRESSTEXT_H
#define QVCL3_NET_ADDRESSTEXT_H

#include <cstddef>
#include <cstdint>

namespace qv {
namespace net {
namespace detail {

// Longest text the formatters write: a full IPv6 address with a 10-digit
// scope, or an interface name.
constexpr size_t kMaxAddressText = 64;

// The value of a hexadecimal digit, -1 for any other character.
int hexValue(char c) noexcept;

// Four decimal parts 0..255 without leading zeros (a leading zero would
// read as octal to some resolvers, so it is refused rather than guessed).
bool parseIPv4(const char* text, size_t length, uint8_t out[4]) noexcept;
// Hexadecimal groups, one "::", a trailing dotted quad, an optional
// "%scope" (digits, or an interface name when scopeId is non-null). With a
// null scopeId, a zone is refused.
bool parseIPv6(const char* text, size_t length, uint8_t out[16], uint32_t* scopeId) noexcept;

// Both write at most kMaxAddressText characters, without a terminator, and
// return how many.
size_t formatIPv4(const uint8_t bytes[4], char* out) noexcept;
// RFC 5952: lower case, no leading zeros, the longest run (the first of
// equals) of two or more zero groups as "::", mapped IPv4 as "::ffff:a.b.c.d".
size_t formatIPv6(const uint8_t bytes[16], uint32_t scopeId, char* out) noexcept;

} // namespace detail
} // namespace net
} // namespace qv

#endif
