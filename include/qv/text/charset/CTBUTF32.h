#ifndef QV_TEXT_CHARSET_CTBUTF32_H
#define QV_TEXT_CHARSET_CTBUTF32_H

#include <qv/text/charset/CTBUTF32Base.h>

namespace qv {
namespace text {
namespace charset {

// UTF-32 encoder with a byte order mark, big-endian (see CTBUTF32Base).
class QV_EXPORT CTBUTF32 : public CTBUTF32Base {
public:
    CTBUTF32();
    const char16_t* getEncodingName() override;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
