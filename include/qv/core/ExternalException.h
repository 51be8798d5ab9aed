#ifndef QV_CORE_EXTERNALEXCEPTION_H
#define QV_CORE_EXTERNALEXCEPTION_H

#include <qv/core/Exception.h>

// The operating system's record of a structured exception. Nothing in the
// library raises these; they are offered to clients that translate such
// exceptions themselves.
struct _EXCEPTION_POINTERS;

namespace qv {

class QV_EXPORT ExternalException : public Exception {
public:
    explicit ExternalException(_EXCEPTION_POINTERS* record);
    ExternalException(const ExternalException& other);
    ExternalException& operator=(const ExternalException& other);
    ~ExternalException() override;

    // Not owned: valid only while the system's exception is being handled.
    _EXCEPTION_POINTERS* getExceptionPointers() const noexcept { return m_record; }

protected:
    ExternalException();

private:
    _EXCEPTION_POINTERS* m_record;
};

#define QV_DECLARE_EXTERNAL_EXCEPTION(Name, Base)                                                                      \
    class QV_EXPORT Name : public Base {                                                                               \
    public:                                                                                                            \
        Name();                                                                                                        \
        Name(const Name& other);                                                                                       \
        Name& operator=(const Name& other);                                                                            \
        ~Name() override;                                                                                              \
    };

QV_DECLARE_EXTERNAL_EXCEPTION(AccessViolationException, ExternalException)
QV_DECLARE_EXTERNAL_EXCEPTION(ArrayBoundsException, ExternalException)
QV_DECLARE_EXTERNAL_EXCEPTION(IllegalInstructionException, ExternalException)
QV_DECLARE_EXTERNAL_EXCEPTION(StackOverflowException, ExternalException)
QV_DECLARE_EXTERNAL_EXCEPTION(UserAbortException, ExternalException)
QV_DECLARE_EXTERNAL_EXCEPTION(IntErrorException, ExternalException)
QV_DECLARE_EXTERNAL_EXCEPTION(IntDivByZeroException, IntErrorException)
QV_DECLARE_EXTERNAL_EXCEPTION(IntOverflowException, IntErrorException)
QV_DECLARE_EXTERNAL_EXCEPTION(MathErrorException, ExternalException)
QV_DECLARE_EXTERNAL_EXCEPTION(MathDivByZeroException, MathErrorException)
QV_DECLARE_EXTERNAL_EXCEPTION(MathInvalidOpException, MathErrorException)
QV_DECLARE_EXTERNAL_EXCEPTION(MathOverflowException, MathErrorException)
QV_DECLARE_EXTERNAL_EXCEPTION(MathUnderflowException, MathErrorException)

} // namespace qv

#endif
