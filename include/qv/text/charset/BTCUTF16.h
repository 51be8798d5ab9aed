#ifndef QV_TEXT_CHARSET_BTCUTF16_H
#define QV_TEXT_CHARSET_BTCUTF16_H

#include <qv/text/charset/BTCUTF16Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-16 decoder, byte-order-neutral (see BTCUTF16Base).
class QV_EXPORT BTCUTF16 : public BTCUTF16Base {
public:
    BTCUTF16();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
