// INI files, the command line and property sets.
#include "Demo.h"

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace {

void printFile(const std::string& path)
{
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line))
        std::printf("  | %s\n", line.c_str());
}

} // namespace

void demoConfiguration(int argc, const char* const* argv)
{
    section("Configuration: an INI file read, edited and written back");
    const std::string path = "/tmp/qvcl3-demo-" + std::to_string(getpid()) + ".ini";
    {
        std::ofstream out(path);
        out << "; demo settings\n[server]\nhost = example.org\nport=8080\n\n[client]\nretries=3\n";
    }
    const std::u16string widePath = qv::String(path.c_str()).toU16String();
    qv::util::IniFile ini(widePath.c_str(), nullptr, qv::util::IniFile::KEEP_LAYOUT);
    char16_t value[64];
    if (ini.GetValue(u"server", u"host", value, 64) == 0)
        std::printf("server.host = %s\n", utf8(value).c_str());
    ini.AddKey(u"server", u"port", u"8443", true);
    ini.AddKey(u"server", u"tls", u"on", false);
    ini.DeleteKey(u"client", u"retries");
    std::printf("after port=8443, tls=on and retries removed (comments kept):\n");
    printFile(path);
    qv::util::IniFileSetIterator sets(ini, u"");
    while (sets.hasNext())
        std::printf("set: %s\n", sets.next().toUtf8().c_str());
    unlink(path.c_str());

    section("Configuration: this program's own command line");
    qv::util::CmdLineParser parser;
    parser.addOption(u'v', qv::String(u"verbose"), false, qv::String(u"Say more"));
    parser.addOption(u'o', qv::String(u"output"), true, qv::String(u"Write to FILE"), qv::String(u"FILE"));
    try {
        parser.parse(argc, argv);
        std::printf(
            "verbose: %s, output: %s, %d positional argument(s)\n", parser.isSet(qv::String(u"verbose")) ? "yes" : "no",
            parser.getValue(qv::String(u"output"), qv::String(u"-")).toUtf8().c_str(), parser.getArgumentCount());
    } catch (const qv::util::CmdLineException& e) {
        std::printf("refused: %s\n", e.getDescription().toUtf8().c_str());
    }
    std::printf("%s", parser.getUsage().toUtf8().c_str());
    parser.parse(qv::String(u"demo.exe /OUTPUT:\"C:\\My Files\\out.txt\" input.txt"));
    std::printf("Windows style: output = %s, argument = %s\n", parser.getValue(qv::String(u"output")).toUtf8().c_str(),
                parser.getArgument(0).toUtf8().c_str());

    section("Configuration: a typed property set as XML");
    qv::util::PropertySet settings;
    settings.setString(qv::String(u"name"), qv::String(u"qvcl3 <demo>"));
    settings.setInt(qv::String(u"port"), 8443);
    settings.setBool(qv::String(u"tls"), true);
    std::printf("%s", settings.storeXmlText().toUtf8().c_str());
}
