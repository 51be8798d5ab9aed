#ifndef QV_TEXT_CHARSET_BTCUTF32BE_H
#define QV_TEXT_CHARSET_BTCUTF32BE_H

#include <qv/text/charset/BTCUTF32Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-32 decoder, big-endian.
class QV_EXPORT BTCUTF32BE : public BTCUTF32Base {
public:
    BTCUTF32BE();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
