#ifndef QV_UTIL_CMDLINEPARSER_H
#define QV_UTIL_CMDLINEPARSER_H

#include <qv/core/Object.h>
#include <qv/lang/String.h>

#include <cstdint>
#include <vector>

namespace qv {
namespace util {

// Options and positional arguments of a program's command line.
//
// Declared options are recognised as "-x", "-x value", "-xvalue", bundled
// short flags ("-abc"), "--name", "--name value", "--name=value", and, for
// older callers, "/name" and "/name:value" (Windows style, names compared
// without regard to case; switchable). "--" ends the options; "-" alone is a
// positional argument, and so is a "/..." word that names no declared option
// (it is taken for a path). Anything else that starts with '-' and names no
// declared option is an error. Failures throw CmdLineException naming the
// option.
class QV_EXPORT CmdLineParser : public Object {
public:
    CmdLineParser();
    ~CmdLineParser() override;

    // shortName: 0 for none; longName: empty for none (one of them is
    // needed). takesValue: the option is followed by a value. description
    // and valueName appear in the usage text.
    void addOption(char16_t shortName, const String& longName, bool takesValue, const String& description = String(),
                   const String& valueName = String(u"VALUE"));
    // Windows-style options are accepted unless switched off.
    void setWindowsStyle(bool accepted);

    // argv[0] is the program; the others are read as the process locale's
    // narrow text. Each parse starts from nothing.
    void parse(int argc, const char* const* argv);
    void parse(int argc, const char16_t* const* argv);
    // One command line, split by the Windows rules as a process start does;
    // its first word is the program.
    void parse(const String& commandLine);

    // name: the long name, or the short name as a one-character text. An
    // undeclared name is never set.
    bool isSet(const String& name) const;
    // The option's last value, or defaultValue when it was not given.
    String getValue(const String& name, const String& defaultValue = String()) const;
    // Every value given, in order.
    std::vector<String> getValues(const String& name) const;
    int32_t getInt(const String& name, int32_t defaultValue) const;
    int64_t getInt64(const String& name, int64_t defaultValue) const;
    double getDouble(const String& name, double defaultValue) const;
    // A flag is true when given; a value is read as true/yes/on/1 or
    // false/no/off/0 (any case).
    bool getBool(const String& name, bool defaultValue) const;

    // The message of the last refused command line; empty after a good one.
    String getLastError() const;
    String getProgramName() const;
    int32_t getArgumentCount() const;
    // RangeErrorException outside 0 .. getArgumentCount() - 1.
    String getArgument(int32_t index) const;

    // "Usage: <program> [options] [arguments]" and one line per option.
    String getUsage() const;

private:
    struct Option {
        char16_t shortName;
        String longName;
        bool takesValue;
        String description;
        String valueName;
        std::vector<String> values;
        int32_t count;
    };

    void parseWords(const std::vector<String>& words);
    static Option* findShort(std::vector<Option>& options, char16_t name);
    static Option* findLong(std::vector<Option>& options, const String& name, bool ignoreCase);
    const Option* find(const String& name) const;

    std::vector<Option> m_options;
    std::vector<String> m_arguments;
    String m_program;
    String m_lastError;
    bool m_windowsStyle;
};

} // namespace util
} // namespace qv

#endif
