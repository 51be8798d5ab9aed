// Command lines as words and as one Windows-style string: a refusal is a
// CmdLineException naming an option, and nothing else escapes.

#include <qv/qvcl3.h>

#include <cstdlib>
#include <vector>

using qv::String;
using qv::util::CmdLineException;
using qv::util::CmdLineParser;

namespace {

void declare(CmdLineParser& parser)
{
    parser.addOption(u'v', String(u"verbose"), false);
    parser.addOption(u'o', String(u"output"), true);
    parser.addOption(u'n', String(), true);
    parser.addOption(0, String(u"count"), true);
}

void query(const CmdLineParser& parser)
{
    parser.getUsage();
    parser.getValues(String(u"output"));
    for (int32_t i = 0; i < parser.getArgumentCount(); ++i)
        parser.getArgument(i);
    try {
        parser.getInt(String(u"count"), 0);
        parser.getDouble(String(u"n"), 0);
        parser.getBool(String(u"output"), false);
    } catch (const CmdLineException& e) {
        if (e.getOption().getLength() == 0)
            std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // Units of UTF-16 from byte pairs; NUL units separate words.
    std::vector<char16_t> units;
    for (size_t i = 0; i + 1 < size; i += 2)
        units.push_back(static_cast<char16_t>(data[i] | (data[i + 1] << 8)));
    std::vector<String> words{String(u"prog")};
    String word;
    for (char16_t unit : units) {
        if (unit == 0) {
            words.push_back(word);
            word = String();
        } else {
            word.append(unit);
        }
    }
    words.push_back(word);
    std::vector<const char16_t*> argv;
    for (const String& w : words)
        argv.push_back(w.getData());

    CmdLineParser parser;
    declare(parser);
    parser.setWindowsStyle(size % 2 == 0);
    try {
        parser.parse(static_cast<int>(argv.size()), argv.data());
        query(parser);
    } catch (const CmdLineException& e) {
        if (e.getOption().getLength() == 0 || parser.getLastError() != e.getDescription())
            std::abort();
    }
    String line;
    for (char16_t unit : units)
        line.append(unit == 0 ? u' ' : unit);
    try {
        parser.parse(line);
        query(parser);
    } catch (const CmdLineException&) {
    }
    return 0;
}
