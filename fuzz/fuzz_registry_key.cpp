// The key store's name checks on arbitrary key paths (UTF-16 from the
// input's byte pairs): a path is either refused with 0x80070057 before
// anything is made, or it creates a key that opens again by the same path
// in another case and that nothing outside the store's own folder sees.

#include "FuzzSupport.h"

#include <dirent.h>
#include <ftw.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

std::string g_store;

char16_t asciiUpper(char16_t c)
{
    return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - u'a' + u'A') : c;
}

// What the store must refuse: an empty, "." or ".." name, or one with '/'.
bool mustRefuse(const std::u16string& path)
{
    if (path.empty())
        return false;
    size_t begin = 0;
    for (;;) {
        const size_t end = path.find(u'\\', begin);
        const std::u16string name =
            path.substr(begin, end == std::u16string::npos ? std::u16string::npos : end - begin);
        if (name.empty() || name == u"." || name == u".." || name.find(u'/') != std::u16string::npos)
            return true;
        if (end == std::u16string::npos)
            return false;
        begin = end + 1;
    }
}

// The entries of a folder other than "." and "..", sorted.
std::string listing(const std::string& folder)
{
    std::string names;
    if (DIR* dir = opendir(folder.c_str())) {
        std::vector<std::string> all;
        while (const dirent* entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..")
                all.push_back(name);
        }
        closedir(dir);
        std::sort(all.begin(), all.end());
        for (const std::string& name : all)
            names += name + "/";
    }
    return names;
}

// Nothing but the store itself beside it, and only the lock and the root in
// it once a key has been deleted again.
void checkNothingEscaped()
{
    fuzz::check(listing(g_store) == "store/", "nothing was made beside the store");
    const std::string inside = listing(g_store + "/store");
    fuzz::check(inside.empty() || inside == ".lock/" || inside == ".lock/CurrentUser/",
                "nothing was made in the store but the root");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    char pattern[] = "/tmp/qvcl3-fuzz-registry-XXXXXX";
    if (!mkdtemp(pattern))
        abort();
    g_store = pattern;
    setenv("QV_REGISTRY_DIR", (g_store + "/store").c_str(), 1);
    atexit([] {
        nftw(
            g_store.c_str(), [](const char* path, const struct stat*, int, struct FTW*) { return remove(path); }, 16,
            FTW_DEPTH | FTW_PHYS);
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::u16string path;
    for (size_t i = 0; i + 1 < size && path.size() < 600; i += 2) {
        const char16_t c = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
        if (c == 0)
            break;
        path.push_back(c);
    }
    QVHANDLE key = QV_INVALID_HANDLE;
    const QVRESULT created = QVRegistryCreateKey(QV_HKEY_CURRENT_USER, path.c_str(), &key);
    if (mustRefuse(path)) {
        fuzz::check(created == QV_E_INVALIDARG, "an escaping name is refused");
        checkNothingEscaped();
        return 0;
    }
    if (created != QV_S_OK) {
        fuzz::check(created == QV_E_INVALIDARG, "a name is either taken or refused as invalid");
        checkNothingEscaped();
        return 0;
    }
    QVRegistryCloseKey(key);
    std::u16string upper = path;
    for (char16_t& c : upper)
        c = asciiUpper(c);
    QVHANDLE again = QV_INVALID_HANDLE;
    fuzz::check(QVRegistryOpenKey(QV_HKEY_CURRENT_USER, upper.c_str(), &again) == QV_S_OK,
                "a created key opens in another case");
    QVRegistryCloseKey(again);
    if (!path.empty()) {
        const std::u16string top = path.substr(0, path.find(u'\\'));
        fuzz::check(QVRegistryDeleteKey(QV_HKEY_CURRENT_USER, top.c_str()) == QV_S_OK, "the key deletes");
    }
    checkNothingEscaped();
    return 0;
}
