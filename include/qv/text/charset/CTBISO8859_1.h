#ifndef QV_TEXT_CHARSET_CTBISO8859_1_H
#define QV_TEXT_CHARSET_CTBISO8859_1_H

#include <qv/text/charset/CTBSingleByte.h>

namespace qv {
namespace text {
namespace charset {

// ISO 8859-1 (Latin-1) encoder; characters above U+00FF are unmappable.
class QV_EXPORT CTBISO8859_1 : public CTBSingleByte {
public:
    CTBISO8859_1();
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
