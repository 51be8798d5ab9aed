#include "EncodingInfo.h"

#include "CodecTables.h"

#include <qv/core/Boundary.h>
#include <qv/text/charset/EncInfo.h>
#include <qvcore3/qvcore3.h>

#include <algorithm>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace qv::text::charset::detail {

namespace {

struct EncodingInfoTable {
    std::vector<EncInfo> records;
    // Upper-case names, aliases and code pages as decimal text, to an index
    // of records.
    std::unordered_map<std::u16string, size_t> index;
};

// Written only by start-up and shut-down, which are never concurrent with
// anything else in the library.
EncodingInfoTable* g_table = nullptr;

std::u16string upperKey(const char16_t* name)
{
    std::u16string key(name);
    QVStrToUpperNW(&key[0], static_cast<int32_t>(key.size()));
    return key;
}

std::u16string codePageKey(int64_t codePage)
{
    const std::string text = std::to_string(codePage);
    return std::u16string(text.begin(), text.end());
}

void addRecord(EncodingInfoTable& table, const char16_t* name, uint32_t codePage)
{
    const size_t at = table.records.size();
    table.records.push_back(EncInfo{name, codePage, 0});
    // emplace keeps an earlier entry under the same key.
    table.index.emplace(upperKey(name), at);
    table.index.emplace(codePageKey(codePage), at);
}

Result find(const std::u16string& key, EncInfo* out)
{
    if (!g_table)
        return results::FAIL;
    auto found = g_table->index.find(key);
    if (found == g_table->index.end())
        return results::FAIL;
    *out = g_table->records[found->second];
    return results::OK;
}

} // namespace

void buildEncodingInfo()
{
    auto table = std::make_unique<EncodingInfoTable>();
    for (const CodecTableRow* row = g_codecTable; row->name; ++row) {
        if (row->codePage != 0)
            addRecord(*table, row->name, row->codePage);
    }
    for (const CodePageTableRow* row = g_codePageTable; row->name; ++row)
        addRecord(*table, row->name, row->codePage);
    for (const CodePageAlias* alias = g_codePageAliases; alias->alias; ++alias) {
        auto target = table->index.find(upperKey(alias->name));
        if (target != table->index.end())
            table->index.emplace(upperKey(alias->alias), target->second);
    }
    freeEncodingInfo();
    g_table = table.release();
}

void freeEncodingInfo() noexcept
{
    delete g_table;
    g_table = nullptr;
}

} // namespace qv::text::charset::detail

using namespace qv;
using namespace qv::text::charset::detail;

extern "C" Result QVGetEncInfoByName(const char16_t* name, EncInfo* out) noexcept
{
    return qvcom::guardBoundary([&] {
        if (!name || !out)
            return results::INVALIDARG;
        return find(upperKey(name), out);
    });
}

extern "C" Result QVGetEncInfoByCodePage(int32_t codePage, EncInfo* out) noexcept
{
    return qvcom::guardBoundary([&] {
        if (!out)
            return results::INVALIDARG;
        return find(codePageKey(codePage), out);
    });
}

extern "C" Result QVEnumerateEncInfo(uint32_t* count, EncInfo* out) noexcept
{
    return qvcom::guardBoundary([&] {
        if (!count || (*count != 0 && !out))
            return results::INVALIDARG;
        if (!g_table)
            return results::FAIL;
        const std::vector<EncInfo>& records = g_table->records;
        const uint32_t available = static_cast<uint32_t>(records.size());
        if (*count < available) {
            *count = available;
            return results::BUFFER_TOO_SMALL;
        }
        std::copy(records.begin(), records.end(), out);
        *count = available;
        return results::OK;
    });
}
