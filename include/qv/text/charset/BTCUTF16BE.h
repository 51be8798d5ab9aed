#ifndef QV_TEXT_CHARSET_BTCUTF16BE_H
#define QV_TEXT_CHARSET_BTCUTF16BE_H

#include <qv/text/charset/BTCUTF16Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-16 decoder, big-endian.
class QV_EXPORT BTCUTF16BE : public BTCUTF16Base {
public:
    BTCUTF16BE();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
