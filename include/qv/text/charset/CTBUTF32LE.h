#ifndef QV_TEXT_CHARSET_CTBUTF32LE_H
#define QV_TEXT_CHARSET_CTBUTF32LE_H

#include <qv/text/charset/CTBUTF32Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-32 encoder, little-endian.
class QV_EXPORT CTBUTF32LE : public CTBUTF32Base {
public:
    CTBUTF32LE();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
