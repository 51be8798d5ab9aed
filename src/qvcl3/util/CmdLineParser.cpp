#include <qv/util/CmdLineParser.h>

#include <qv/core/Boundary.h>
#include <qv/util/CmdLineException.h>
#include <qvcore3/qvcore3.h>

#include "util/StrictNumber.h"

#include <memory>
#include <string>

namespace qv {
namespace util {

namespace {

template <class... Parts>
String concat(const Parts&... parts)
{
    String text;
    (text.append(parts), ...);
    return text;
}

String dashed(const String& name)
{
    return name.getLength() == 1 ? concat(u"-", name) : concat(u"--", name);
}

[[noreturn]] void refuseNumber(const String& name, const String& text)
{
    throw CmdLineException(concat(u"invalid number for option ", dashed(name), u": ", text), dashed(name));
}

} // namespace

CmdLineParser::CmdLineParser() : m_windowsStyle(true) {}

CmdLineParser::~CmdLineParser() = default;

void CmdLineParser::addOption(char16_t shortName, const String& longName, bool takesValue, const String& description,
                              const String& valueName)
{
    if (shortName == 0 && longName.getLength() == 0)
        throw ResultException(results::INVALIDARG, String(u"an option needs a name"));
    m_options.push_back(Option{shortName, longName, takesValue, description, valueName, {}, 0});
}

void CmdLineParser::setWindowsStyle(bool accepted)
{
    m_windowsStyle = accepted;
}

void CmdLineParser::parse(int argc, const char* const* argv)
{
    std::vector<String> words;
    for (int i = 0; i < argc; ++i)
        words.push_back(String(argv[i]));
    parseWords(words);
}

void CmdLineParser::parse(int argc, const char16_t* const* argv)
{
    std::vector<String> words;
    for (int i = 0; i < argc; ++i)
        words.push_back(String(argv[i]));
    parseWords(words);
}

void CmdLineParser::parse(const String& commandLine)
{
    char16_t** argv = nullptr;
    int32_t argc = 0;
    qvcom::throwIfFailed(QVCommandLineSplit(commandLine.getData(), &argv, &argc));
    std::unique_ptr<char16_t*, void (*)(char16_t**)> owned(argv, &QVCommandLineFree);
    std::vector<String> words;
    for (int32_t i = 0; i < argc; ++i)
        words.push_back(String(argv[i]));
    parseWords(words);
}

CmdLineParser::Option* CmdLineParser::findShort(std::vector<Option>& options, char16_t name)
{
    for (Option& option : options) {
        if (option.shortName != 0 && option.shortName == name)
            return &option;
    }
    return nullptr;
}

CmdLineParser::Option* CmdLineParser::findLong(std::vector<Option>& options, const String& name, bool ignoreCase)
{
    for (Option& option : options) {
        if (option.longName.getLength() > 0 && option.longName.equals(name, ignoreCase))
            return &option;
    }
    return nullptr;
}

const CmdLineParser::Option* CmdLineParser::find(const String& name) const
{
    for (const Option& option : m_options) {
        if ((option.longName.getLength() > 0 && option.longName.equals(name)) ||
            (name.getLength() == 1 && option.shortName != 0 && option.shortName == name.getCharAt(0)))
            return &option;
    }
    return nullptr;
}

// Parsed into fresh copies that replace the old results only at the end, so
// that a refused command line leaves the results of the last good one.
void CmdLineParser::parseWords(const std::vector<String>& words)
{
    m_lastError = String();
    auto refuse = [this](const char16_t* what, const String& option) {
        m_lastError = concat(what, option);
        throw CmdLineException(m_lastError, option);
    };
    std::vector<Option> options = m_options;
    for (Option& option : options) {
        option.values.clear();
        option.count = 0;
    }
    std::vector<String> arguments;
    auto take = [](Option& option, const String& value) {
        ++option.count;
        option.values.push_back(value);
    };
    size_t i = 1;
    auto valueAfter = [&](const String& written) -> String {
        if (i + 1 >= words.size())
            refuse(u"missing value for option ", written);
        return words[++i];
    };
    // One option as written (its name part) with the value attached to it
    // ("--name=value", "/name:value"), if any.
    auto handle = [&](Option& option, const String& written, int32_t separator, const String& word) {
        if (separator >= 0) {
            if (!option.takesValue)
                refuse(u"option takes no value: ", written);
            take(option, word.substring(separator + 1));
        } else {
            take(option, option.takesValue ? valueAfter(written) : String());
        }
    };
    bool optionsEnded = false;
    for (; i < words.size(); ++i) {
        const String& word = words[i];
        const int32_t length = word.getLength();
        const char16_t lead = length > 1 ? word.getCharAt(0) : 0;
        if (optionsEnded || (lead != u'-' && lead != u'/')) {
            arguments.push_back(word);
        } else if (word.equals(u"--")) {
            optionsEnded = true;
        } else if (lead == u'/') {
            const int32_t colon = word.indexOf(u':');
            const String name = word.substring(1, colon < 0 ? length : colon);
            Option* option = !m_windowsStyle         ? nullptr
                             : name.getLength() == 1 ? findShort(options, name.getCharAt(0))
                                                     : findLong(options, name, true);
            if (option)
                handle(*option, word.substring(0, colon < 0 ? length : colon), colon, word);
            else
                arguments.push_back(word);
        } else if (word.getCharAt(1) == u'-') {
            const int32_t equals = word.indexOf(u'=');
            const String written = word.substring(0, equals < 0 ? length : equals);
            Option* option = findLong(options, written.substring(2), false);
            if (!option)
                refuse(u"unknown option: ", written);
            handle(*option, written, equals, word);
        } else {
            for (int32_t at = 1; at < length; ++at) {
                const String written = concat(u"-", word.substring(at, at + 1));
                Option* option = findShort(options, word.getCharAt(at));
                if (!option)
                    refuse(u"unknown option: ", written);
                if (option->takesValue) {
                    take(*option, at + 1 < length ? word.substring(at + 1) : valueAfter(written));
                    break;
                }
                take(*option, String());
            }
        }
    }
    m_options.swap(options);
    m_arguments.swap(arguments);
    m_program = words.empty() ? String() : words[0];
}

bool CmdLineParser::isSet(const String& name) const
{
    const Option* option = find(name);
    return option && option->count > 0;
}

String CmdLineParser::getValue(const String& name, const String& defaultValue) const
{
    const Option* option = find(name);
    return option && !option->values.empty() ? option->values.back() : defaultValue;
}

std::vector<String> CmdLineParser::getValues(const String& name) const
{
    const Option* option = find(name);
    return option ? option->values : std::vector<String>();
}

int32_t CmdLineParser::getInt(const String& name, int32_t defaultValue) const
{
    const int64_t value = getInt64(name, defaultValue);
    if (value < INT32_MIN || value > INT32_MAX)
        refuseNumber(name, getValue(name));
    return static_cast<int32_t>(value);
}

int64_t CmdLineParser::getInt64(const String& name, int64_t defaultValue) const
{
    int64_t value = defaultValue;
    if (isSet(name) && !detail::parseStrict(getValue(name), value))
        refuseNumber(name, getValue(name));
    return value;
}

double CmdLineParser::getDouble(const String& name, double defaultValue) const
{
    double value = defaultValue;
    if (isSet(name) && !detail::parseStrict(getValue(name), value))
        refuseNumber(name, getValue(name));
    return value;
}

bool CmdLineParser::getBool(const String& name, bool defaultValue) const
{
    const Option* option = find(name);
    if (!option || option->count == 0)
        return defaultValue;
    if (!option->takesValue)
        return true;
    const String value = option->values.back();
    for (const char16_t* yes : {u"true", u"yes", u"on", u"1"}) {
        if (value.equals(yes, true))
            return true;
    }
    for (const char16_t* no : {u"false", u"no", u"off", u"0"}) {
        if (value.equals(no, true))
            return false;
    }
    throw CmdLineException(concat(u"invalid truth value for option ", dashed(name), u": ", value), dashed(name));
}

String CmdLineParser::getLastError() const
{
    return m_lastError;
}

String CmdLineParser::getProgramName() const
{
    return m_program;
}

int32_t CmdLineParser::getArgumentCount() const
{
    return static_cast<int32_t>(m_arguments.size());
}

String CmdLineParser::getArgument(int32_t index) const
{
    if (index < 0 || index >= getArgumentCount())
        throw RangeErrorException(concat(u"argument index ", String::valueOf(index), u" outside 0..",
                                         String::valueOf(getArgumentCount() - 1)));
    return m_arguments[static_cast<size_t>(index)];
}

String CmdLineParser::getUsage() const
{
    String usage(u"Usage: ");
    usage += m_program.getLength() > 0 ? m_program : String(u"program");
    usage += u" [options] [arguments]\n";
    if (m_options.empty())
        return usage;
    usage += u"Options:\n";
    std::vector<String> heads;
    int32_t widest = 0;
    for (const Option& option : m_options) {
        String head(u"  ");
        head += option.shortName ? concat(u"-", option.shortName) : String(u"  ");
        if (option.longName.getLength() > 0) {
            head += option.shortName ? u", --" : u"  --";
            head += option.longName;
            if (option.takesValue)
                head += concat(u"=", option.valueName);
        } else if (option.takesValue) {
            head += concat(u" ", option.valueName);
        }
        widest = std::max(widest, head.getLength());
        heads.push_back(head);
    }
    for (size_t i = 0; i < m_options.size(); ++i) {
        String line = heads[i];
        if (m_options[i].description.getLength() > 0) {
            line.append(u' ', widest + 2 - line.getLength());
            line += m_options[i].description;
        }
        usage += line;
        usage += u"\n";
    }
    return usage;
}

} // namespace util
} // namespace qv
