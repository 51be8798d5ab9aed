#ifndef QV_TEXT_CHARSET_CTBUTF16BE_H
#define QV_TEXT_CHARSET_CTBUTF16BE_H

#include <qv/text/charset/CTBUTF16Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-16 encoder, big-endian.
class QV_EXPORT CTBUTF16BE : public CTBUTF16Base {
public:
    CTBUTF16BE();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
