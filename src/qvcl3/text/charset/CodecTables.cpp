#include "CodecTables.h"

#include <string>

namespace qv::text::charset::detail {

#define QV_CODEC(name, codePage, canonical, classSuffix)                                                               \
    {                                                                                                                  \
        name, codePage, canonical, u"qv::text::charset::CTB" classSuffix, u"qv::text::charset::BTC" classSuffix        \
    }

// "ASCII" is deliberately a further name of itself as well; the registry
// keeps the first registration, so the second row changes nothing.
const CodecTableRow g_codecTable[] = {
    QV_CODEC(u"ASCII", 20127, nullptr, u"ASCII"),
    QV_CODEC(u"ANSI_X3.4-1968", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"ISO-IR-6", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"ANSI_X3.4-1986", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"ISO_646.IRV:1991", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"ASCII", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"ISO646-US", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"US-ASCII", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"US", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"IBM367", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"CP367", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"CSASCII", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"646", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"DEFAULT", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"ASCII7", 0, u"ASCII", u"ASCII"),
    QV_CODEC(u"ISO8859_1", 28591, nullptr, u"ISO8859_1"),
    QV_CODEC(u"ISO_8859-1:1987", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"ISO-IR-100", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"ISO_8859-1", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"ISO-8859-1", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"LATIN1", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"L1", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"IBM819", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"CP819", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"CSISOLATIN1", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"8859_1", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"ISO_8859-1:1978", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"IBM-819", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"819", 0, u"ISO8859_1", u"ISO8859_1"),
    QV_CODEC(u"CP437", 437, nullptr, u"CP437"),
    QV_CODEC(u"IBM437", 0, u"CP437", u"CP437"),
    QV_CODEC(u"437", 0, u"CP437", u"CP437"),
    QV_CODEC(u"CSPC8CODEPAGE437", 0, u"CP437", u"CP437"),
    QV_CODEC(u"IBM-437", 0, u"CP437", u"CP437"),
    QV_CODEC(u"CP1252", 1252, nullptr, u"CP1252"),
    QV_CODEC(u"WINDOWS-1252", 0, u"CP1252", u"CP1252"),
    QV_CODEC(u"UTF-8", 65001, nullptr, u"UTF8"),
    QV_CODEC(u"UTF8", 0, u"UTF-8", u"UTF8"),
    QV_CODEC(u"UTF_8", 0, u"UTF-8", u"UTF8"),
    QV_CODEC(u"UTF-16LE", 0, nullptr, u"UTF16LE"),
    QV_CODEC(u"UTF-16BE", 0, nullptr, u"UTF16BE"),
    QV_CODEC(u"UTF-32BE", 0, nullptr, u"UTF32BE"),
    QV_CODEC(u"UTF-32LE", 0, nullptr, u"UTF32LE"),
    QV_CODEC(u"AMP-7", 0, nullptr, u"AMP7"),
    QV_CODEC(u"A7", 0, u"AMP-7", u"AMP7"),
    {nullptr, 0, nullptr, nullptr, nullptr},
};

#undef QV_CODEC

const CodePageTableRow g_codePageTable[] = {
    {u"CP1250", 1250, 0}, {u"CP1251", 1251, 0}, {u"CP1253", 1253, 0}, {u"CP1254", 1254, 0}, {u"CP1255", 1255, 0},
    {u"CP1256", 1256, 0}, {u"CP1257", 1257, 0}, {u"CP1258", 1258, 0}, {u"CP737", 737, 0},   {u"CP775", 775, 0},
    {u"CP850", 850, 0},   {u"CP852", 852, 0},   {u"CP855", 855, 0},   {u"CP857", 857, 0},   {u"CP858", 858, 0},
    {u"CP862", 862, 0},   {u"CP866", 866, 0},   {u"CP932", 932, 0},   {u"EUCJP", 20932, 0}, {nullptr, 0, 0},
};

const CodePageAlias g_codePageAliases[] = {
    {u"EUC-JP", u"EUCJP"},        {u"EUC_JP", u"EUCJP"},        {u"WINDOWS-31J", u"CP932"},
    {u"MS932", u"CP932"},         {u"WINDOWS-1250", u"CP1250"}, {u"WINDOWS-1251", u"CP1251"},
    {u"WINDOWS-1253", u"CP1253"}, {u"WINDOWS-1254", u"CP1254"}, {u"WINDOWS-1255", u"CP1255"},
    {u"WINDOWS-1256", u"CP1256"}, {u"WINDOWS-1257", u"CP1257"}, {u"WINDOWS-1258", u"CP1258"},
    {nullptr, nullptr},
};

namespace {

bool sameName(const char16_t* table, const char16_t* name, int32_t length) noexcept
{
    int32_t i = 0;
    for (; i < length; ++i) {
        if (table[i] != name[i])
            return false;
    }
    return table[i] == 0;
}

uint32_t codePageOfRow(const char16_t* upperName, int32_t length) noexcept
{
    for (const CodePageTableRow* row = g_codePageTable; row->name; ++row) {
        if (sameName(row->name, upperName, length))
            return row->codePage;
    }
    return 0;
}

} // namespace

uint32_t findCodePageByName(const char16_t* upperName, int32_t length) noexcept
{
    if (uint32_t codePage = codePageOfRow(upperName, length))
        return codePage;
    for (const CodePageAlias* alias = g_codePageAliases; alias->alias; ++alias) {
        if (sameName(alias->alias, upperName, length))
            return codePageOfRow(alias->name, static_cast<int32_t>(std::char_traits<char16_t>::length(alias->name)));
    }
    return 0;
}

} // namespace qv::text::charset::detail
