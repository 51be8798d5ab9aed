#ifndef QV_TEXT_CHARSET_CTBASCII_H
#define QV_TEXT_CHARSET_CTBASCII_H

#include <qv/text/charset/CTBSingleByte.h>

namespace qv {
namespace text {
namespace charset {

// US-ASCII encoder; characters above U+007F are unmappable.
class QV_EXPORT CTBASCII : public CTBSingleByte {
public:
    CTBASCII();
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
