#ifndef QV_TEXT_CHARSET_CHARSETEXCEPTIONS_H
#define QV_TEXT_CHARSET_CHARSETEXCEPTIONS_H

#include <qv/core/Exception.h>

namespace qv {
namespace text {
namespace charset {

// 0x8BB34101: malformed input of a converter.
class QV_EXPORT InvalidCharacterException : public Exception {
public:
    QV_EXCEPTION_CONSTRUCTORS(InvalidCharacterException)
    Result getResult() const override;
};

// 0x8BB34102: a character the target encoding cannot represent.
class QV_EXPORT UnmappableCharacterException : public Exception {
public:
    QV_EXCEPTION_CONSTRUCTORS(UnmappableCharacterException)
    Result getResult() const override;
};

// 0x8BB34103: an encoding name nobody knows.
class QV_EXPORT UnknownEncodingException : public Exception {
public:
    QV_EXCEPTION_CONSTRUCTORS(UnknownEncodingException)
    Result getResult() const override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
