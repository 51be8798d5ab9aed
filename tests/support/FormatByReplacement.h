#ifndef QVCL3_TESTS_FORMATBYREPLACEMENT_H
#define QVCL3_TESTS_FORMATBYREPLACEMENT_H

// The oracle of String::format, shared by its differential test and its fuzz
// target.

#include <qv/lang/String.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace qvtest {

inline std::u16string placeholderText(int32_t n)
{
    std::string digits = std::to_string(n);
    return u"{" + std::u16string(digits.begin(), digits.end()) + u"}";
}

// format as it was first written, one replace() per placeholder over the
// whole remaining text: quadratic, but its rules are the plain reading of
// the behaviour, so it stays here as the oracle for the one-pass version.
inline std::u16string formatByReplacement(const std::u16string& pattern, const std::vector<const char16_t*>& list)
{
    qv::String s(pattern.data(), static_cast<int32_t>(pattern.size()));
    std::vector<std::u16string> placeholders;
    std::vector<std::pair<int32_t, int32_t>> positions;
    for (int32_t n = 0;; ++n) {
        std::u16string wanted = placeholderText(n);
        qv::String::TextRef ref(wanted.data(), static_cast<int32_t>(wanted.size()));
        int32_t position = s.indexOf(ref, 0);
        if (position < 0 || n >= static_cast<int32_t>(list.size()))
            break;
        placeholders.push_back(wanted);
        while (position >= 0) {
            positions.emplace_back(position, n);
            position = s.indexOf(ref, position + static_cast<int32_t>(wanted.size()));
        }
    }
    std::sort(positions.begin(), positions.end());
    int32_t offset = 0;
    for (const auto& entry : positions) {
        const std::u16string& wanted = placeholders[static_cast<size_t>(entry.second)];
        int32_t found = s.indexOf(qv::String::TextRef(wanted.data(), static_cast<int32_t>(wanted.size())), offset);
        if (found < 0)
            continue;
        const char16_t* argument = list[static_cast<size_t>(entry.second)];
        std::u16string text = argument ? argument : u"";
        s.replace(found, static_cast<int32_t>(wanted.size()), text.data(), static_cast<int32_t>(text.size()), 0);
        offset = found + static_cast<int32_t>(text.size());
    }
    return s.toU16String();
}

} // namespace qvtest

#endif
