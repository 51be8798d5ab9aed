#include <qv/text/charset/CharsetExceptions.h>

#include "core/ExceptionDefinition.h"

namespace qv {
namespace text {
namespace charset {

#define QV_DEFINE_RESULT_EXCEPTION(Name, code)                                                                         \
    QV_DEFINE_EXCEPTION(Name, Exception)                                                                               \
    Result Name::getResult() const                                                                                     \
    {                                                                                                                  \
        return code;                                                                                                   \
    }

QV_DEFINE_RESULT_EXCEPTION(InvalidCharacterException, results::INVALID_CHARACTER)
QV_DEFINE_RESULT_EXCEPTION(UnmappableCharacterException, results::UNMAPPABLE_CHARACTER)
QV_DEFINE_RESULT_EXCEPTION(UnknownEncodingException, results::UNKNOWN_ENCODING)

} // namespace charset
} // namespace text
} // namespace qv
