#ifndef QVCL3_TEXT_CHARSET_CODEPAGES_H
#define QVCL3_TEXT_CHARSET_CODEPAGES_H

#include <cstdint>

namespace qv::text::charset::detail {

// The code pages converted through iconv.
struct CodePageInfo {
    uint32_t codePage;
    const char16_t* name;
    const char* label; // the name again, for messages
    const char* iconvName;
    int maxBytesPerChar; // per UTF-16 code unit
};

// Null for a code page that is not in the table.
const CodePageInfo* findCodePage(uint32_t codePage);

// The "UTF-16" side of every code-page conversion, in the host's byte order.
const char* hostUtf16Name();

} // namespace qv::text::charset::detail

#endif
