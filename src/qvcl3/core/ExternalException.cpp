#include <qv/core/ExternalException.h>

namespace qv {

ExternalException::ExternalException() : m_record(nullptr) {}
ExternalException::ExternalException(_EXCEPTION_POINTERS* record) : m_record(record) {}
ExternalException::ExternalException(const ExternalException& other) = default;
ExternalException& ExternalException::operator=(const ExternalException& other) = default;
ExternalException::~ExternalException() = default;

#define QV_DEFINE_EXTERNAL_EXCEPTION(Name, Base)                                                                       \
    Name::Name() = default;                                                                                            \
    Name::Name(const Name& other) = default;                                                                           \
    Name& Name::operator=(const Name& other) = default;                                                                \
    Name::~Name() = default;

QV_DEFINE_EXTERNAL_EXCEPTION(AccessViolationException, ExternalException)
QV_DEFINE_EXTERNAL_EXCEPTION(ArrayBoundsException, ExternalException)
QV_DEFINE_EXTERNAL_EXCEPTION(IllegalInstructionException, ExternalException)
QV_DEFINE_EXTERNAL_EXCEPTION(StackOverflowException, ExternalException)
QV_DEFINE_EXTERNAL_EXCEPTION(UserAbortException, ExternalException)
QV_DEFINE_EXTERNAL_EXCEPTION(IntErrorException, ExternalException)
QV_DEFINE_EXTERNAL_EXCEPTION(IntDivByZeroException, IntErrorException)
QV_DEFINE_EXTERNAL_EXCEPTION(IntOverflowException, IntErrorException)
QV_DEFINE_EXTERNAL_EXCEPTION(MathErrorException, ExternalException)
QV_DEFINE_EXTERNAL_EXCEPTION(MathDivByZeroException, MathErrorException)
QV_DEFINE_EXTERNAL_EXCEPTION(MathInvalidOpException, MathErrorException)
QV_DEFINE_EXTERNAL_EXCEPTION(MathOverflowException, MathErrorException)
QV_DEFINE_EXTERNAL_EXCEPTION(MathUnderflowException, MathErrorException)

} // namespace qv
