#include <qv/core/Exception.h>

#include "core/ExceptionDefinition.h"

namespace qv {

Exception::Exception() = default;
Exception::Exception(const String& message) : m_message(message) {}
Exception::Exception(const Exception& other) : Object(other), m_message(other.m_message) {}

Exception& Exception::operator=(const Exception& other)
{
    Object::operator=(other);
    m_message = other.m_message;
    return *this;
}

Exception::~Exception() = default;

String Exception::getDescription()
{
    return m_message;
}

String Exception::getDescription() const
{
    return const_cast<Exception*>(this)->getDescription();
}

Result Exception::getResult() const
{
    return results::FAIL;
}

QV_DEFINE_EXCEPTION(CastFailedException, Exception)
QV_DEFINE_EXCEPTION(ClassNotFoundException, Exception)
QV_DEFINE_EXCEPTION(CloneNotSupportedException, Exception)
QV_DEFINE_EXCEPTION(IllegalAccessException, Exception)
QV_DEFINE_EXCEPTION(IllegalStateException, Exception)
QV_DEFINE_EXCEPTION(InvalidPathException, Exception)
QV_DEFINE_EXCEPTION(RangeErrorException, Exception)
QV_DEFINE_EXCEPTION(ReadOnlyException, Exception)
QV_DEFINE_EXCEPTION(UnsupportedOperationException, Exception)

ResultException::ResultException() : m_code(results::FAIL) {}
ResultException::ResultException(Result code) : m_code(code) {}
ResultException::ResultException(Result code, const String& message) : Exception(message), m_code(code) {}
ResultException::ResultException(const ResultException& other) = default;
ResultException& ResultException::operator=(const ResultException& other) = default;
ResultException::~ResultException() = default;

Result ResultException::getResult() const
{
    return m_code;
}

OutOfMemoryException::OutOfMemoryException() noexcept = default;
OutOfMemoryException::OutOfMemoryException(const OutOfMemoryException& other) noexcept
    : Exception(other), std::bad_alloc(other)
{}

OutOfMemoryException& OutOfMemoryException::operator=(const OutOfMemoryException& other) noexcept
{
    Exception::operator=(other);
    std::bad_alloc::operator=(other);
    return *this;
}

OutOfMemoryException::~OutOfMemoryException() noexcept = default;

Result OutOfMemoryException::getResult() const
{
    return results::OUTOFMEMORY;
}

const char* OutOfMemoryException::what() const noexcept
{
    return "bad allocation";
}

} // namespace qv
