#ifndef QV_TEXT_CHARSET_CTBUTF16LE_H
#define QV_TEXT_CHARSET_CTBUTF16LE_H

#include <qv/text/charset/CTBUTF16Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-16 encoder, little-endian.
class QV_EXPORT CTBUTF16LE : public CTBUTF16Base {
public:
    CTBUTF16LE();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
