#ifndef QV_TEXT_CHARSET_CTBUTF32BE_H
#define QV_TEXT_CHARSET_CTBUTF32BE_H

#include <qv/text/charset/CTBUTF32Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-32 encoder, big-endian.
class QV_EXPORT CTBUTF32BE : public CTBUTF32Base {
public:
    CTBUTF32BE();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
