// The command-line splitter behind Process: the input's bytes, taken two at a
// time, are a UTF-16 command line. Every argument it yields, quoted by the
// Windows rules and joined again, must split back into the same arguments.
#include <qvcore3/qvcore3.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "contract broken: %s\n", what);
    std::abort();
}

bool isSeparator(char16_t unit)
{
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r' || unit == u'\v' || unit == u'\f';
}

// Quotes one argument so that the Windows rules give it back unchanged.
std::u16string quote(const std::u16string& argument)
{
    bool plain = !argument.empty();
    for (char16_t unit : argument)
        plain = plain && !isSeparator(unit) && unit != u'"';
    if (plain)
        return argument;
    std::u16string quoted = u"\"";
    size_t backslashes = 0;
    for (char16_t unit : argument) {
        if (unit == u'\\') {
            ++backslashes;
            continue;
        }
        // Backslashes before a quote are doubled, and the quote escaped.
        quoted.append(unit == u'"' ? 2 * backslashes + 1 : backslashes, u'\\');
        backslashes = 0;
        quoted += unit;
    }
    quoted.append(2 * backslashes, u'\\');
    quoted += u'"';
    return quoted;
}

std::vector<std::u16string> split(const std::u16string& line)
{
    char16_t** argv = nullptr;
    int32_t argc = -1;
    if (QVCommandLineSplit(line.c_str(), &argv, &argc) != 0)
        fail("split refused a command line");
    if (argc < 0 || !argv || argv[argc] != nullptr)
        fail("argument array malformed");
    std::vector<std::u16string> arguments;
    size_t total = 0;
    for (int32_t i = 0; i < argc; ++i) {
        arguments.emplace_back(argv[i]);
        total += arguments.back().size();
    }
    QVCommandLineFree(argv);
    if (total > line.size())
        fail("arguments longer than the command line");
    return arguments;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::u16string line;
    for (size_t i = 0; i + 1 < size; i += 2) {
        const char16_t unit = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
        if (unit != 0)
            line += unit;
    }
    const std::vector<std::u16string> arguments = split(line);
    std::u16string joined;
    for (const std::u16string& argument : arguments) {
        if (!joined.empty())
            joined += u' ';
        joined += quote(argument);
    }
    if (split(joined) != arguments)
        fail("quoting and splitting again changed the arguments");
    return 0;
}
