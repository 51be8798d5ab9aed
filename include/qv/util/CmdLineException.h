#ifndef QV_UTIL_CMDLINEEXCEPTION_H
#define QV_UTIL_CMDLINEEXCEPTION_H

#include <qv/core/Exception.h>

namespace qv {
namespace util {

// A command line the parser can't accept: an unknown option, a missing or
// unwanted value, a value that is not a number. The message names the
// option as it was written ("unknown option: --colour"); getOption() gives
// it alone. Its result code is 0x80070057.
class QV_EXPORT CmdLineException : public Exception {
public:
    CmdLineException();
    CmdLineException(const String& message, const String& option);
    CmdLineException(const CmdLineException& other);
    CmdLineException& operator=(const CmdLineException& other);
    ~CmdLineException() override;

    String getOption() const;
    Result getResult() const override;

private:
    String m_option;
};

} // namespace util
} // namespace qv

#endif
