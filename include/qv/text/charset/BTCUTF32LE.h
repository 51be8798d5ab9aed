#ifndef QV_TEXT_CHARSET_BTCUTF32LE_H
#define QV_TEXT_CHARSET_BTCUTF32LE_H

#include <qv/text/charset/BTCUTF32Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-32 decoder, little-endian.
class QV_EXPORT BTCUTF32LE : public BTCUTF32Base {
public:
    BTCUTF32LE();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
