#ifndef QV_TEXT_CHARSET_CTBCP437_H
#define QV_TEXT_CHARSET_CTBCP437_H

#include <qv/text/charset/CTBSingleByte.h>

namespace qv {
namespace text {
namespace charset {

// Code page 437 encoder (the original PC character set).
class QV_EXPORT CTBCP437 : public CTBSingleByte {
public:
    CTBCP437();
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
