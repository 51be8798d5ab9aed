#ifndef QV_TEXT_CHARSET_CTBUTF32BASE_H
#define QV_TEXT_CHARSET_CTBUTF32BASE_H

#include <qv/text/charset/CTBWideBase.h>

namespace qv {
namespace text {
namespace charset {

// The UTF-32 encoders: CTBUTF32LE, CTBUTF32BE and the byte-order-neutral
// CTBUTF32, which writes big-endian after a byte order mark (00 00 FE FF)
// placed before the first character. A surrogate pair becomes one value; a
// lone surrogate throws InvalidCharacterException. The family is implemented
// in CTBUTF32Base.cpp, its conversion in CTBWideBase.cpp.
class QV_EXPORT CTBUTF32Base : public CTBWideBase<4> {
protected:
    CTBUTF32Base(bool bigEndian, bool byteOrderMark);
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
