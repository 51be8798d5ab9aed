#ifndef QV_TEXT_CHARSET_CHARSETEXCEPTIONS_H
#define QV_TEXT_CHARSET_CHARSETEXCEPTIONS_H

#include <qv/core/Exception.h>

namespace qv {
namespace text {
namespace charset {

#define QV_DECLARE_RESULT_EXCEPTION(Name)                                                                              \
    class QV_EXPORT Name : public Exception {                                                                          \
    public:                                                                                                            \
        Name();                                                                                                        \
        explicit Name(const ::qv::String& message);                                                                   \
        Name(const Name& other);                                                                                       \
        Name& operator=(const Name& other);                                                                            \
        ~Name() override;                                                                                              \
        ::qv::Result getResult() const override;                                                                       \
    };

// 0x8BB34101: malformed input of a converter.
QV_DECLARE_RESULT_EXCEPTION(InvalidCharacterException)
// 0x8BB34102: a character the target encoding cannot represent.
QV_DECLARE_RESULT_EXCEPTION(UnmappableCharacterException)
// 0x8BB34103: an encoding name nobody knows.
QV_DECLARE_RESULT_EXCEPTION(UnknownEncodingException)

#undef QV_DECLARE_RESULT_EXCEPTION

} // namespace charset
} // namespace text
} // namespace qv

#endif
