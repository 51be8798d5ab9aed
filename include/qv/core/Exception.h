#ifndef QV_CORE_EXCEPTION_H
#define QV_CORE_EXCEPTION_H

#include <qv/core/Object.h>
#include <qv/lang/String.h>

#include <new>

namespace qv {

// Root of everything the library throws. Thrown by value and caught by
// reference; the reference count plays no part in throwing.
class QV_EXPORT Exception : public Object {
public:
    Exception();
    explicit Exception(const String& message);
    Exception(const Exception& other);
    Exception& operator=(const Exception& other);
    ~Exception() override;

    // A copy of the message (empty for a default-constructed exception).
    virtual String getDescription();
    // Handlers catch by const reference: this forwards to the overridable
    // form above, so subclasses override only that one.
    String getDescription() const;
    // The result code that stands for this exception at a component boundary.
    virtual Result getResult() const;

private:
    String m_message;
};

// The constructors every message-carrying exception class declares.
#define QV_EXCEPTION_CONSTRUCTORS(Name)                                                                                \
    Name();                                                                                                            \
    explicit Name(const ::qv::String& message);                                                                        \
    Name(const Name& other);                                                                                           \
    Name& operator=(const Name& other);                                                                                \
    ~Name() override;

// Declares an exception class with a default and a message constructor whose
// result code is its base's.
#define QV_DECLARE_EXCEPTION(Name, Base)                                                                               \
    class QV_EXPORT Name : public Base {                                                                               \
    public:                                                                                                            \
        QV_EXCEPTION_CONSTRUCTORS(Name)                                                                                \
    };

QV_DECLARE_EXCEPTION(CastFailedException, Exception)
QV_DECLARE_EXCEPTION(ClassNotFoundException, Exception)
QV_DECLARE_EXCEPTION(CloneNotSupportedException, Exception)
QV_DECLARE_EXCEPTION(IllegalAccessException, Exception)
QV_DECLARE_EXCEPTION(IllegalStateException, Exception)
QV_DECLARE_EXCEPTION(InvalidPathException, Exception)
QV_DECLARE_EXCEPTION(RangeErrorException, Exception)
QV_DECLARE_EXCEPTION(ReadOnlyException, Exception)
QV_DECLARE_EXCEPTION(UnsupportedOperationException, Exception)

// Carries any result code, unchanged (even a success code).
class QV_EXPORT ResultException : public Exception {
public:
    ResultException();
    explicit ResultException(Result code);
    ResultException(Result code, const String& message);
    ResultException(const ResultException& other);
    ResultException& operator=(const ResultException& other);
    ~ResultException() override;

    Result getResult() const override;

private:
    Result m_code;
};

// Out of memory: both a qv::Exception (0x8007000E, empty message) and a
// std::bad_alloc ("bad allocation"), so either handler catches it.
class QV_EXPORT OutOfMemoryException : public Exception, public std::bad_alloc {
public:
    OutOfMemoryException() noexcept;
    OutOfMemoryException(const OutOfMemoryException& other) noexcept;
    OutOfMemoryException& operator=(const OutOfMemoryException& other) noexcept;
    ~OutOfMemoryException() noexcept override;

    Result getResult() const override;
    const char* what() const noexcept override;
};

} // namespace qv

#endif
