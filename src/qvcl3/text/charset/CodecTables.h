#ifndef QVCL3_TEXT_CHARSET_CODECTABLES_H
#define QVCL3_TEXT_CHARSET_CODECTABLES_H

#include <cstdint>

namespace qv::text::charset::detail {

// A registration of the built-in codec table. canonical is null when the row
// is the encoding's canonical name.
struct CodecTableRow {
    const char16_t* name;
    uint32_t codePage;
    const char16_t* canonical;
    const char16_t* encoderClassName;
    const char16_t* decoderClassName;
};

// Ends with an all-zero row.
extern const CodecTableRow g_codecTable[];

// The encodings converted through iconv's code pages.
struct CodePageTableRow {
    const char16_t* name;
    uint32_t codePage;
    uint32_t reserved;
};

// Ends with a row whose name is null.
extern const CodePageTableRow g_codePageTable[];

struct CodePageAlias {
    const char16_t* alias;
    const char16_t* name;
};

// Ends with a row whose alias is null.
extern const CodePageAlias g_codePageAliases[];

// The code page of an upper-case code-page name or alias, or 0.
uint32_t findCodePageByName(const char16_t* upperName, int32_t length) noexcept;

} // namespace qv::text::charset::detail

#endif
