#include "i18n/PropertiesParser.h"

#include <qv/i18n/BundleFormatException.h>
#include <qv/util/PropertiesFormat.h>

#include <string>

namespace qv {
namespace i18n {
namespace detail {

namespace {

// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
std::u16string decodeUtf8(const unsigned char* data, size_t size, const String& file)
{
    std::u16string text;
    text.reserve(size);
    size_t i = 0;
    if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF)
        i = 3;
    while (i < size) {
        const unsigned char lead = data[i];
        if (lead < 0x80) {
            text.push_back(lead);
            ++i;
            continue;
        }
        int extra;
        uint32_t code;
        uint32_t minimum;
        if (lead >= 0xC2 && lead <= 0xDF) {
            extra = 1;
            code = lead & 0x1Fu;
            minimum = 0x80;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            extra = 2;
            code = lead & 0x0Fu;
            minimum = 0x800;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            extra = 3;
            code = lead & 0x07u;
            minimum = 0x10000;
        } else {
            throw BundleFormatException(file, -1, static_cast<int64_t>(i), u"invalid UTF-8");
        }
        if (size - i <= static_cast<size_t>(extra))
            throw BundleFormatException(file, -1, static_cast<int64_t>(i), u"truncated UTF-8 sequence");
        for (int k = 1; k <= extra; ++k) {
            const unsigned char next = data[i + k];
            if ((next & 0xC0u) != 0x80u)
                throw BundleFormatException(file, -1, static_cast<int64_t>(i), u"invalid UTF-8");
            code = (code << 6) | (next & 0x3Fu);
        }
        if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            throw BundleFormatException(file, -1, static_cast<int64_t>(i), u"invalid UTF-8");
        if (code >= 0x10000) {
            code -= 0x10000;
            text.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
            text.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
        } else {
            text.push_back(static_cast<char16_t>(code));
        }
        i += static_cast<size_t>(extra) + 1;
    }
    return text;
}

} // namespace

void parseProperties(const char* data, size_t size, const String& file, std::vector<std::pair<String, String>>& out)
{
    const std::u16string text = decodeUtf8(reinterpret_cast<const unsigned char*>(data), size, file);
    try {
        util::PropertiesFormat::Entries entries = util::PropertiesFormat::parse(String(text), file);
        out.swap(entries);
    } catch (const util::PropertiesFormatException& e) {
        // The reader's message is "<source>:<line>: <problem>"; the bundle
        // exception rebuilds that prefix itself.
        String problem = e.getDescription();
        const String prefix = String(file).append(u':').append(String::valueOf(e.getLine())).append(u": ");
        if (problem.startsWith(prefix))
            problem = problem.substring(prefix.getLength());
        throw BundleFormatException(file, e.getLine(), -1, problem);
    }
}

} // namespace detail
} // namespace i18n
} // namespace qv
