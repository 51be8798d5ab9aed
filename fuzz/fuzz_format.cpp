// String::format and formatArray: the pattern and the arguments come from
// the input (UTF-16 units, the parts separated by U+0000), and the one-pass
// result must equal that of the replacement algorithm kept as the oracle.
#include "../tests/support/FormatByReplacement.h"

#include <qv/qvcl3.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::vector<std::u16string> parts(1);
    for (size_t i = 0; i + 1 < size; i += 2) {
        const char16_t unit = static_cast<char16_t>(data[i] | (data[i + 1] << 8));
        if (unit == 0 && parts.size() < 64)
            parts.emplace_back();
        else
            parts.back() += unit;
    }
    const std::u16string pattern = parts[0];
    std::vector<const char16_t*> arguments;
    for (size_t i = 1; i < parts.size(); ++i)
        arguments.push_back(parts[i].size() == 1 && parts[i][0] == u'\xFFFF' ? nullptr : parts[i].c_str());
    qv::String formatted(u"previous text");
    formatted.formatArray(pattern.data(), static_cast<int32_t>(pattern.size()), arguments.data(),
                          static_cast<int32_t>(arguments.size()));
    if (formatted.toU16String() != qvtest::formatByReplacement(pattern, arguments)) {
        std::fprintf(stderr, "format differs from the replacement algorithm\n");
        std::abort();
    }
    // The pattern holds no NUL, so as a NUL-terminated text it gives the same.
    qv::String terminated(u"previous text");
    terminated.formatArray(pattern.c_str(), -1, arguments.data(), static_cast<int32_t>(arguments.size()));
    if (terminated.toU16String() != formatted.toU16String()) {
        std::fprintf(stderr, "format of the NUL-terminated pattern differs\n");
        std::abort();
    }
    // The variadic form with the pattern held by the String itself.
    if (arguments.size() >= 2) {
        qv::String self(pattern.data(), static_cast<int32_t>(pattern.size()));
        self.format(self, arguments[0], arguments[1]);
        std::vector<const char16_t*> two(arguments.begin(), arguments.begin() + 2);
        if (self.toU16String() != qvtest::formatByReplacement(pattern, two)) {
            std::fprintf(stderr, "format over its own pattern differs\n");
            std::abort();
        }
    }
    return 0;
}
