#ifndef QV_UTIL_INIFILEEXCEPTION_H
#define QV_UTIL_INIFILEEXCEPTION_H

#include <qv/core/Exception.h>

namespace qv {
namespace util {

// What the INI-file iterators throw. Its result code is the general failure
// whatever its type: callers that need to tell the cases apart read GetType().
class QV_EXPORT IniFileException : public Exception {
public:
    enum TYPE {
        UNKNOWN = 0,
        SET_NOT_FOUND = 1,
        KEY_NOT_FOUND = 2,
        NO_MORE_ELEMENTS = 3,
        IO_ERROR = 4,
    };

    IniFileException();
    explicit IniFileException(TYPE type);
    IniFileException(TYPE type, const String& message);
    IniFileException(const IniFileException& other);
    IniFileException& operator=(const IniFileException& other);
    ~IniFileException() override;

    TYPE GetType() const;

private:
    TYPE m_type;
};

} // namespace util
} // namespace qv

#endif
