#ifndef QV_UTIL_INIFILEEXCEPTION_H
#define QV_UTIL_INIFILEEXCEPTION_H

#include <qv/core/Exception.h>

namespace qv {
namespace util {

// What the INI-file iterators throw. Its result code follows its type, so a
// component boundary reports the same failure a lookup would.
class QV_EXPORT IniFileException : public Exception {
public:
    enum TYPE {
        UNKNOWN = 0,
        SET_NOT_FOUND = 1,    // 0x80070002
        KEY_NOT_FOUND = 2,    // 0x80070002
        NO_MORE_ELEMENTS = 3, // 0x80070026, end of data
        IO_ERROR = 4,         // 0x80004005
    };

    IniFileException();
    explicit IniFileException(TYPE type);
    IniFileException(TYPE type, const String& message);
    IniFileException(const IniFileException& other);
    IniFileException& operator=(const IniFileException& other);
    ~IniFileException() override;

    TYPE GetType() const;
    Result getResult() const override;

private:
    TYPE m_type;
};

} // namespace util
} // namespace qv

#endif
