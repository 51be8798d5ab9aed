#include "CodePages.h"

#include "Iconv.h"

namespace qv::text::charset::detail {

namespace {

// CP1255 and CP1258 encode some precomposed letters as a base letter and up
// to two combining marks, hence three bytes for one code unit.
const CodePageInfo codePages[] = {
    {1250, u"CP1250", "CP1250", "CP1250", 1}, {1251, u"CP1251", "CP1251", "CP1251", 1},
    {1253, u"CP1253", "CP1253", "CP1253", 1}, {1254, u"CP1254", "CP1254", "CP1254", 1},
    {1255, u"CP1255", "CP1255", "CP1255", 3}, {1256, u"CP1256", "CP1256", "CP1256", 1},
    {1257, u"CP1257", "CP1257", "CP1257", 1}, {1258, u"CP1258", "CP1258", "CP1258", 3},
    {737, u"CP737", "CP737", "CP737", 1},     {775, u"CP775", "CP775", "CP775", 1},
    {850, u"CP850", "CP850", "CP850", 1},     {852, u"CP852", "CP852", "CP852", 1},
    {855, u"CP855", "CP855", "CP855", 1},     {857, u"CP857", "CP857", "CP857", 1},
    {858, u"CP858", "CP858", "CP858", 1},     {862, u"CP862", "CP862", "CP862", 1},
    {866, u"CP866", "CP866", "CP866", 1},     {932, u"CP932", "CP932", "CP932", 2},
    {20932, u"EUCJP", "EUCJP", "EUC-JP", 3},
};

} // namespace

const CodePageInfo* findCodePage(uint32_t codePage)
{
    for (const CodePageInfo& info : codePages) {
        if (info.codePage == codePage) {
            return &info;
        }
    }
    return nullptr;
}

const char* hostUtf16Name()
{
    return Iconv::hostIsLittleEndian() ? "UTF-16LE" : "UTF-16BE";
}

} // namespace qv::text::charset::detail
