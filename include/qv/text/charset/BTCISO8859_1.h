#ifndef QV_TEXT_CHARSET_BTCISO8859_1_H
#define QV_TEXT_CHARSET_BTCISO8859_1_H

#include <qv/text/charset/BTCSingleByte.h>

namespace qv {
namespace text {
namespace charset {

// ISO 8859-1 (Latin-1) decoder: byte n is U+00nn.
class QV_EXPORT BTCISO8859_1 : public BTCSingleByte {
public:
    BTCISO8859_1();
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
