#ifndef QV_LEGACY_CQVCMDLINEPARSER_H
#define QV_LEGACY_CQVCMDLINEPARSER_H

#include <qv/core/Object.h>
#include <qv/core/Result.h>
#include <qv/core/TextSpelling.h>
#include <qv/util/CmdLineParser.h>

#include <cstdint>

namespace qv {

// Kept for older callers: util::CmdLineParser (GetParser()) in the old
// spelling. Text comes back in the caller's buffer (0x80004009 when it does
// not fit); a refused command line gives 0x80070057 and its message through
// GetLastError.
class QV_EXPORT CQVCmdLineParser : public Object {
public:
    CQVCmdLineParser();
    ~CQVCmdLineParser() override;

    Result AddOption(char16_t shortName, const char16_t* longName, bool takesValue, const char16_t* description);
    Result Parse(int argc, const char* const* argv);
    Result Parse(const char16_t* commandLine);
    bool IsSet(const char16_t* name) const;
    // 0x80070002 when the option was not given (or has no value).
    Result GetValue(const char16_t* name, char16_t* buffer, unsigned int size) const;
    int32_t GetArgumentCount() const;
    // 0x80070057 for an index out of range.
    Result GetArgument(int32_t index, char16_t* buffer, unsigned int size) const;
    Result GetUsage(char16_t* buffer, unsigned int size) const;
    // The message of the last refused command line; empty after a good one.
    Result GetLastError(char16_t* buffer, unsigned int size) const;

    util::CmdLineParser& GetParser();

    // The same with the unsigned short spelling of UTF-16.
    template <class T, IfUShortText<T> = 0>
    Result AddOption(char16_t shortName, const T* longName, bool takesValue, const T* description)
    {
        return AddOption(shortName, reinterpret_cast<const char16_t*>(longName), takesValue,
                         reinterpret_cast<const char16_t*>(description));
    }
    template <class T, IfUShortText<T> = 0>
    Result Parse(const T* commandLine)
    {
        return Parse(reinterpret_cast<const char16_t*>(commandLine));
    }
    template <class T, IfUShortText<T> = 0>
    bool IsSet(const T* name) const
    {
        return IsSet(reinterpret_cast<const char16_t*>(name));
    }
    template <class T, IfUShortText<T> = 0>
    Result GetValue(const T* name, T* buffer, unsigned int size) const
    {
        return GetValue(reinterpret_cast<const char16_t*>(name), reinterpret_cast<char16_t*>(buffer), size);
    }
    template <class T, IfUShortText<T> = 0>
    Result GetArgument(int32_t index, T* buffer, unsigned int size) const
    {
        return GetArgument(index, reinterpret_cast<char16_t*>(buffer), size);
    }
    template <class T, IfUShortText<T> = 0>
    Result GetUsage(T* buffer, unsigned int size) const
    {
        return GetUsage(reinterpret_cast<char16_t*>(buffer), size);
    }
    template <class T, IfUShortText<T> = 0>
    Result GetLastError(T* buffer, unsigned int size) const
    {
        return GetLastError(reinterpret_cast<char16_t*>(buffer), size);
    }

private:
    util::CmdLineParser m_parser;
};

} // namespace qv

// Older callers name it without the namespace.
using qv::CQVCmdLineParser;

#endif
