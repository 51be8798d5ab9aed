#ifndef QV_TEXT_CHARSET_CHARSETEXCEPTIONS_H
#define QV_TEXT_CHARSET_CHARSETEXCEPTIONS_H

// Stand-in until the runtime core's exception classes are merged; same
// names, same result codes.

#include <qv/core/Export.h>

#include <cstdint>
#include <stdexcept>

namespace qv {
namespace text {
namespace charset {

class QV_EXPORT InvalidCharacterException : public std::runtime_error
{
public:
    explicit InvalidCharacterException(const char* message) : std::runtime_error(message) {}
    int32_t getResult() const { return static_cast<int32_t>(0x8BB34101u); }
};

class QV_EXPORT UnmappableCharacterException : public std::runtime_error
{
public:
    explicit UnmappableCharacterException(const char* message) : std::runtime_error(message) {}
    int32_t getResult() const { return static_cast<int32_t>(0x8BB34102u); }
};

class QV_EXPORT UnknownEncodingException : public std::runtime_error
{
public:
    explicit UnknownEncodingException(const char* message) : std::runtime_error(message) {}
    int32_t getResult() const { return static_cast<int32_t>(0x8BB34103u); }
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
