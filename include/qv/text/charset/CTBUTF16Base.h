#ifndef QV_TEXT_CHARSET_CTBUTF16BASE_H
#define QV_TEXT_CHARSET_CTBUTF16BASE_H

#include <qv/text/charset/CTBWideBase.h>

namespace qv {
namespace text {
namespace charset {

// The UTF-16 encoders: CTBUTF16LE, CTBUTF16BE and the byte-order-neutral
// CTBUTF16, which writes big-endian after a byte order mark (FE FF) placed
// before the first character. A lone surrogate throws
// InvalidCharacterException. The family is implemented in
// CTBUTF16Base.cpp, its conversion in CTBWideBase.cpp.
class QV_EXPORT CTBUTF16Base : public CTBWideBase<2> {
protected:
    CTBUTF16Base(bool bigEndian, bool byteOrderMark);
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
