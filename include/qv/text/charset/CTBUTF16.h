#ifndef QV_TEXT_CHARSET_CTBUTF16_H
#define QV_TEXT_CHARSET_CTBUTF16_H

#include <qv/text/charset/CTBUTF16Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-16 encoder with a byte order mark, big-endian (see CTBUTF16Base).
class QV_EXPORT CTBUTF16 : public CTBUTF16Base {
public:
    CTBUTF16();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
