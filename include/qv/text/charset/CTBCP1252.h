#ifndef QV_TEXT_CHARSET_CTBCP1252_H
#define QV_TEXT_CHARSET_CTBCP1252_H

#include <qv/text/charset/CTBSingleByte.h>

namespace qv {
namespace text {
namespace charset {

// Code page 1252 (Windows Western) encoder.
class QV_EXPORT CTBCP1252 : public CTBSingleByte {
public:
    CTBCP1252();
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
