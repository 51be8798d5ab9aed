#include <qv/util/CmdLineException.h>

namespace qv {
namespace util {

CmdLineException::CmdLineException() = default;

CmdLineException::CmdLineException(const String& message, const String& option) : Exception(message), m_option(option)
{}

CmdLineException::CmdLineException(const CmdLineException& other) = default;

CmdLineException& CmdLineException::operator=(const CmdLineException& other) = default;

CmdLineException::~CmdLineException() = default;

String CmdLineException::getOption() const
{
    return m_option;
}

Result CmdLineException::getResult() const
{
    return results::INVALIDARG;
}

} // namespace util
} // namespace qv
