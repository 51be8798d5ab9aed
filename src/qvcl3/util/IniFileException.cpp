#include <qv/util/IniFileException.h>

namespace qv {
namespace util {

IniFileException::IniFileException() : m_type(UNKNOWN) {}

IniFileException::IniFileException(TYPE type) : m_type(type) {}

IniFileException::IniFileException(TYPE type, const String& message) : Exception(message), m_type(type) {}

IniFileException::IniFileException(const IniFileException& other) = default;

IniFileException& IniFileException::operator=(const IniFileException& other) = default;

IniFileException::~IniFileException() = default;

IniFileException::TYPE IniFileException::GetType() const
{
    return m_type;
}

} // namespace util
} // namespace qv
