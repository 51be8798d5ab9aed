// ini: reads and changes INI files through qv::util::IniFile.
#include "Commands.h"

#include <qv/util/IniFile.h>
#include <qv/util/IniFileIterator.h>

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace qvcl {
namespace {

constexpr qv::Result NOT_FOUND = static_cast<qv::Result>(0x80070002u);
constexpr qv::Result TOO_SMALL = static_cast<qv::Result>(0x80004009u);

std::string hex(qv::Result result)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
    return text;
}

// The value, or an empty optional when the key is missing.
bool getValue(qv::util::IniFile& file, const qv::String& set, const qv::String& key, std::string& value,
              qv::Result& result)
{
    std::vector<char16_t> buffer(256);
    for (;;) {
        result = file.GetValue(set.getData(), key.getData(), buffer.data(), static_cast<unsigned>(buffer.size()));
        if (result != TOO_SMALL)
            break;
        buffer.resize(buffer.size() * 4);
    }
    if (result != 0)
        return false;
    value = narrow(qv::String(buffer.data()));
    return true;
}

std::vector<std::string> setNames(qv::util::IniFile& file)
{
    std::vector<std::string> names;
    qv::util::IniFileSetIterator sets(file, u"");
    while (sets.hasNext())
        names.push_back(narrow(sets.next()));
    return names;
}

} // namespace

int runIni(Arguments& arguments, int argc, char** argv)
{
    qv::util::CmdLineParser& parser = arguments.parser();
    parser.addOption(u'L', u"lock", true, u"hold the named semaphore NAME during each operation", u"NAME");
    parser.addOption(0, u"keep-layout", false,
                     u"set, del: change only the lines concerned; comments, order and spacing stay");
    if (!arguments.parse(argc, argv))
        return EXIT_OK;
    const std::vector<std::string> words = arguments.positional();
    if (words.empty())
        throw UsageError{"missing operation (get, set, del or list)"};
    const std::string& operation = words[0];
    const size_t count = words.size();
    if ((operation == "get" && count != 4) || (operation == "set" && count != 5) ||
        (operation == "del" && (count < 3 || count > 4)) || (operation == "list" && (count < 2 || count > 3)))
        throw UsageError{"wrong number of arguments for '" + operation + "'"};
    if (operation != "get" && operation != "set" && operation != "del" && operation != "list")
        throw UsageError{"unknown operation '" + operation + "'"};

    const std::string& path = words[1];
    const std::string& command = arguments.command();
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        report(command, path + ": Is a directory");
        return EXIT_ERROR;
    }
    // Only set may create the file; reading a missing one is an error, not an
    // empty file.
    if (operation != "set" && !std::filesystem::exists(path, error)) {
        report(command, path + ": No such file or directory");
        return EXIT_ERROR;
    }
    const std::string lock = arguments.value(u"lock");
    const short flags = arguments.isSet(u"keep-layout") ? qv::util::IniFile::KEEP_LAYOUT : 0;
    qv::util::IniFile file(wide(path).getData(), lock.empty() ? nullptr : lock.c_str(), flags);
    const qv::String set = count > 2 ? wide(words[2]) : qv::String();
    const qv::String key = count > 3 ? wide(words[3]) : qv::String();

    qv::Result result = 0;
    if (operation == "get") {
        std::string value;
        if (getValue(file, set, key, value, result)) {
            std::printf("%s\n", value.c_str());
            return EXIT_OK;
        }
    } else if (operation == "set") {
        result = file.AddKey(set.getData(), key.getData(), wide(words[4]).getData(), true);
    } else if (operation == "del") {
        result = count == 4 ? file.DeleteKey(set.getData(), key.getData()) : file.DeleteSet(set.getData());
    } else if (count == 2) {
        for (const std::string& name : setNames(file))
            std::printf("%s\n", name.c_str());
        return EXIT_OK;
    } else {
        bool found = false;
        for (const std::string& name : setNames(file))
            found = found || name == words[2];
        if (found) {
            qv::util::IniFileKeyIterator keys(file, set.getData());
            while (keys.hasNext()) {
                const qv::String name = keys.next();
                std::string value;
                getValue(file, set, name, value, result);
                std::printf("%s=%s\n", narrow(name).c_str(), value.c_str());
            }
            return EXIT_OK;
        }
        report(command, path + ": no set '" + words[2] + "'");
        return EXIT_ERROR;
    }
    if (result == 0)
        return EXIT_OK;
    if (result == NOT_FOUND)
        report(command, path + ": no key '" + words[3] + "' in set '" + words[2] + "'");
    else if (result == 1)
        report(command, path + ": cannot write the file");
    else
        report(command, path + ": failed with " + hex(result));
    return EXIT_ERROR;
}

} // namespace qvcl
