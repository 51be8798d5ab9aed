// INI files as read from disk, then edited in both rewrite modes: nothing
// crashes or leaks, and a plain rewrite always reads back what it wrote.

#include <qv/qvcl3.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using qv::String;
using qv::util::IniFile;
using qv::util::IniFileKeyIterator;
using qv::util::IniFileSetIterator;

namespace {

const std::string& scratchPath()
{
    // On tmpfs where there is one: the rewrite forces every file to disk,
    // which a real disk makes slow.
    static const std::string path = std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") +
                                    "/qvcl3-fuzz-ini-" + std::to_string(getpid()) + ".ini";
    return path;
}

void writeFile(const uint8_t* data, size_t size)
{
    FILE* file = std::fopen(scratchPath().c_str(), "wb");
    if (!file)
        std::abort();
    std::fwrite(data, 1, size, file);
    std::fclose(file);
}

// Every set and key the file shows, each read once.
std::vector<String> walk(IniFile& file)
{
    std::vector<String> sets;
    IniFileSetIterator setIterator(file, u"");
    while (setIterator.hasNext())
        sets.push_back(setIterator.next());
    for (const String& set : sets) {
        IniFileKeyIterator keys(file, set.getData());
        while (keys.hasNext()) {
            const String key = keys.next();
            char16_t value[600];
            file.GetValue(set.getData(), key.getData(), value, 600);
        }
    }
    return sets;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const String path(scratchPath().c_str());
    for (short flags : {short(0), IniFile::KEEP_LAYOUT}) {
        writeFile(data, size);
        IniFile file(path.getData(), nullptr, flags);
        const std::vector<String> sets = walk(file);
        const String set = sets.empty() ? String(u"fuzz") : sets.front();
        if (file.AddKey(set.getData(), u"fuzzkey", u"fuzz value", true) != 0)
            std::abort();
        file.DeleteKey(set.getData(), u"fuzzkey");
        file.AddKey(u"fuzz.sub", u"k", u"v", false);
        file.DeleteSet(set.getData());
        if (flags == 0) {
            if (file.AddKey(u"fresh", u"k", u"v", true) != 0)
                std::abort();
            char16_t value[8];
            if (file.GetValue(u"fresh", u"k", value, 8) != 0 || String(value) != String(u"v"))
                std::abort();
        }
        walk(file);
    }
    std::remove(scratchPath().c_str());
    return 0;
}
