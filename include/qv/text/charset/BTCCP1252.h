#ifndef QV_TEXT_CHARSET_BTCCP1252_H
#define QV_TEXT_CHARSET_BTCCP1252_H

#include <qv/text/charset/BTCSingleByte.h>

namespace qv {
namespace text {
namespace charset {

// Code page 1252 (Windows Western) decoder; bytes 0x81, 0x8D, 0x8F, 0x90
// and 0x9D are undefined and unmappable.
class QV_EXPORT BTCCP1252 : public BTCSingleByte {
public:
    BTCCP1252();
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
