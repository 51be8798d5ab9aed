#ifndef QV_TEXT_CHARSET_BTCUTF32_H
#define QV_TEXT_CHARSET_BTCUTF32_H

#include <qv/text/charset/BTCUTF32Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-32 decoder, byte-order-neutral (see BTCUTF32Base).
class QV_EXPORT BTCUTF32 : public BTCUTF32Base {
public:
    BTCUTF32();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
