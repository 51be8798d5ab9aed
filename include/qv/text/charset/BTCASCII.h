#ifndef QV_TEXT_CHARSET_BTCASCII_H
#define QV_TEXT_CHARSET_BTCASCII_H

#include <qv/text/charset/BTCSingleByte.h>

namespace qv {
namespace text {
namespace charset {

// US-ASCII decoder; bytes 0x80-0xFF are unmappable.
class QV_EXPORT BTCASCII : public BTCSingleByte {
public:
    BTCASCII();
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
