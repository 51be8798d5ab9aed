// Bundle files of arbitrary bytes either load whole or are refused with a
// BundleFormatException; every key a loaded bundle reports is found again;
// valid UTF-8 without a backslash always loads.

#include "FuzzSupport.h"

#include <fstream>
#include <string>

#include <unistd.h>

namespace {

const std::string& directory()
{
    static const std::string path = [] {
        std::string pattern = "/tmp/fuzz_bundle_file_XXXXXX";
        if (mkdtemp(&pattern[0]) == nullptr)
            fuzz::fail("no temporary directory");
        qv::i18n::StringBundle::setSearchPath(qv::String(pattern.c_str(), -1, u"UTF-8"));
        return pattern;
    }();
    return path;
}

bool validUtf8WithoutBackslash(const uint8_t* data, size_t size)
{
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == '\\' || data[i] >= 0x80)
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qv::i18n;
    const std::string file = directory() + "/f.properties";
    std::ofstream(file, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    StringBundle::clearCache();
    try {
        qv::Reference<const StringBundle> bundle = StringBundle::getBundle(u"f", Locale());
        const ListStringBundle* list = dynamic_cast<const ListStringBundle*>(bundle.get());
        fuzz::check(list != nullptr, "a file bundle is a list bundle");
        for (const qv::String& key : list->getKeys())
            list->getString(key);
    } catch (const BundleFormatException& e) {
        fuzz::check(!validUtf8WithoutBackslash(data, size), "plain ASCII text refused");
        fuzz::check(e.getLine() > 0 || e.getOffset() >= 0, "a refusal names its place");
    }
    return 0;
}
