#ifndef QV_TEXT_CHARSET_BTCUTF16LE_H
#define QV_TEXT_CHARSET_BTCUTF16LE_H

#include <qv/text/charset/BTCUTF16Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-16 decoder, little-endian.
class QV_EXPORT BTCUTF16LE : public BTCUTF16Base {
public:
    BTCUTF16LE();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
