// Filling numbered arguments into a message never crashes, leaves a text
// without "{0}" (or with more markers than arguments) unchanged, and never
// fills a marker that came in with an argument's text.

#include "FuzzSupport.h"

#include <qv/collections/List.h>
#include <qv/log/StringBundleLogger.h>

#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Reader reader(data, size);
    const int count = reader.byte() % 8;
    // The rest: the pattern, then the arguments, separated by '|'.
    std::vector<std::string> parts(1);
    for (size_t i = 0; i < reader.size(); ++i) {
        const char c = static_cast<char>(reader.data()[i] & 0x7F);
        if (c == '|')
            parts.emplace_back();
        else
            parts.back() += c;
    }
    qv::collections::List<qv::Object> args;
    for (int k = 0; k < count; ++k) {
        const std::string& text = static_cast<size_t>(k + 1) < parts.size() ? parts[static_cast<size_t>(k + 1)] : "";
        // Arguments are marked so that their text can be told apart.
        const std::string marked = "<" + text + ">";
        args.add(qv::Reference<qv::Object>(new qv::String(marked.c_str(), static_cast<int32_t>(marked.size()))));
    }
    const qv::String pattern(parts[0].c_str(), static_cast<int32_t>(parts[0].size()));
    const std::string result = qv::log::StringBundleLogger::fillArguments(pattern, args).toUtf8();

    if (parts[0].find("{0}") == std::string::npos && result != parts[0])
        std::abort();
    int needed = 0;
    while (parts[0].find("{" + std::to_string(needed) + "}") != std::string::npos)
        ++needed;
    if (needed > count && result != parts[0])
        std::abort();
    if (needed > 0 && needed <= count && result == parts[0])
        std::abort();
    return 0;
}
