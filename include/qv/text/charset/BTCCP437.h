#ifndef QV_TEXT_CHARSET_BTCCP437_H
#define QV_TEXT_CHARSET_BTCCP437_H

#include <qv/text/charset/BTCSingleByte.h>

namespace qv {
namespace text {
namespace charset {

// Code page 437 decoder (the original PC character set).
class QV_EXPORT BTCCP437 : public BTCSingleByte {
public:
    BTCCP437();
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
