#include <qvcore3/qvcore3.h>

#include <dirent.h>
#include <langinfo.h>
#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

QVRESULT CopyOut(const char* text, size_t size, char* out, int32_t capacity, int32_t* length) noexcept
{
    if (size > 0x7FFFFFFE) {
        return QV_E_INVALIDARG;
    }
    if (length != nullptr) {
        *length = static_cast<int32_t>(size);
    }
    if (out == nullptr || capacity <= 0 || static_cast<size_t>(capacity) < size + 1) {
        return QV_E_BUFFER_TOO_SMALL;
    }
    memcpy(out, text, size);
    out[size] = '\0';
    return QV_S_OK;
}

// Tries the name as given first so that "C" and explicit code sets keep
// their meaning; a bare "de_DE" prefers the UTF-8 form over ISO-8859-1.
locale_t OpenLocale(const char* name) noexcept
{
    if (name[0] == '\0' || strcmp(name, "C") == 0 || strcmp(name, "POSIX") == 0) {
        return newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    }
    if (strchr(name, '.') == nullptr) {
        const char* const suffixes[] = {".UTF-8", ".utf8"};
        for (const char* suffix : suffixes) {
            char full[256];
            std::string base(name);
            std::string modifier;
            const size_t at = base.find('@');
            if (at != std::string::npos) {
                modifier = base.substr(at);
                base.resize(at);
            }
            if (snprintf(full, sizeof full, "%s%s%s", base.c_str(), suffix, modifier.c_str()) >=
                static_cast<int>(sizeof full)) {
                break;
            }
            locale_t opened = newlocale(LC_ALL_MASK, full, static_cast<locale_t>(0));
            if (opened != static_cast<locale_t>(0)) {
                return opened;
            }
        }
    }
    return newlocale(LC_ALL_MASK, name, static_cast<locale_t>(0));
}

void CopyField(char* field, size_t size, const char* text) noexcept
{
    snprintf(field, size, "%s", text == nullptr ? "" : text);
}

// The names in glibc's locale archive: a header of 32-bit words whose third
// to fifth give the name hash table (offset, used, size); each table entry
// is (hash, name offset, record offset), empty when the name offset is 0.
void ReadArchiveNames(std::vector<std::string>& names)
{
    FILE* file = fopen("/usr/lib/locale/locale-archive", "rbe");
    if (file == nullptr) {
        return;
    }
    uint32_t header[5] = {};
    std::vector<char> data;
    if (fread(header, sizeof header, 1, file) == 1 && header[0] == 0xde020109u && fseek(file, 0, SEEK_END) == 0) {
        const long size = ftell(file);
        if (size > 0 && fseek(file, 0, SEEK_SET) == 0) {
            data.resize(static_cast<size_t>(size));
            if (fread(data.data(), 1, data.size(), file) != data.size()) {
                data.clear();
            }
        }
    }
    fclose(file);
    const uint64_t tableEnd = static_cast<uint64_t>(header[2]) + static_cast<uint64_t>(header[4]) * 12u;
    if (data.empty() || tableEnd > data.size()) {
        return;
    }
    for (uint32_t i = 0; i < header[4]; ++i) {
        uint32_t entry[3];
        memcpy(entry, data.data() + header[2] + i * 12u, sizeof entry);
        if (entry[1] == 0 || entry[1] >= data.size()) {
            continue;
        }
        const char* name = data.data() + entry[1];
        const size_t length = strnlen(name, data.size() - entry[1]);
        if (length > 0 && length < data.size() - entry[1]) {
            names.emplace_back(name, length);
        }
    }
}

void ReadLocaleDirectories(std::vector<std::string>& names)
{
    DIR* directory = opendir("/usr/lib/locale");
    if (directory == nullptr) {
        return;
    }
    while (dirent* entry = readdir(directory)) {
        if (entry->d_name[0] == '.') {
            continue;
        }
        std::string probe = std::string("/usr/lib/locale/") + entry->d_name + "/LC_CTYPE";
        struct stat status;
        if (stat(probe.c_str(), &status) == 0) {
            names.emplace_back(entry->d_name);
        }
    }
    closedir(directory);
}

} // namespace

extern "C" {

QVRESULT QVGetEnvironmentVariable(const char* name, char* value, int32_t capacity, int32_t* length) QVCORE3_NOEXCEPT
{
    if (name == nullptr) {
        return QV_E_POINTER;
    }
    const char* found = getenv(name);
    const QVRESULT result =
        CopyOut(found == nullptr ? "" : found, found == nullptr ? 0 : strlen(found), value, capacity, length);
    return result == QV_S_OK && found == nullptr ? QV_S_FALSE : result;
}

QVRESULT QVGetMessagesLocaleName(char* name, int32_t capacity, int32_t* length) QVCORE3_NOEXCEPT
{
    const char* const variables[] = {"LC_ALL", "LC_MESSAGES", "LANG"};
    for (const char* variable : variables) {
        const char* value = getenv(variable);
        if (value != nullptr && value[0] != '\0') {
            return CopyOut(value, strlen(value), name, capacity, length);
        }
    }
    return CopyOut("C", 1, name, capacity, length);
}

QVRESULT QVGetAvailableLocales(char* names, int32_t capacity, int32_t* length) QVCORE3_NOEXCEPT
{
    try {
        std::vector<std::string> found{"C", "POSIX"};
        ReadArchiveNames(found);
        ReadLocaleDirectories(found);
        std::sort(found.begin() + 2, found.end());
        found.erase(std::unique(found.begin() + 2, found.end()), found.end());
        std::string list;
        for (const std::string& name : found) {
            list.append(name).push_back('\0');
        }
        // The list's own terminator is the NUL CopyOut adds.
        return CopyOut(list.data(), list.size(), names, capacity, length);
    } catch (...) {
        return QV_E_OUTOFMEMORY;
    }
}

QVRESULT QVGetLocaleNumericFormat(const char* locale, STRUCT_QV_NUMERIC_FORMAT* format) QVCORE3_NOEXCEPT
{
    if (locale == nullptr || format == nullptr) {
        return QV_E_POINTER;
    }
    locale_t opened = OpenLocale(locale);
    if (opened == static_cast<locale_t>(0)) {
        return QV_E_FILE_NOT_FOUND;
    }
    CopyField(format->decimalPoint, sizeof format->decimalPoint, nl_langinfo_l(RADIXCHAR, opened));
    CopyField(format->thousandsSeparator, sizeof format->thousandsSeparator, nl_langinfo_l(THOUSEP, opened));
    CopyField(format->grouping, sizeof format->grouping, nl_langinfo_l(GROUPING, opened));
    freelocale(opened);
    return QV_S_OK;
}

QVRESULT QVGetLocaleTimeFormat(const char* locale, int32_t item, char* pattern, int32_t capacity,
                               int32_t* length) QVCORE3_NOEXCEPT
{
    if (locale == nullptr) {
        return QV_E_POINTER;
    }
    nl_item which;
    switch (item) {
    case QV_LOCALE_DATE_FORMAT: which = D_FMT; break;
    case QV_LOCALE_TIME_FORMAT: which = T_FMT; break;
    case QV_LOCALE_DATE_TIME_FORMAT: which = D_T_FMT; break;
    default: return QV_E_INVALIDARG;
    }
    locale_t opened = OpenLocale(locale);
    if (opened == static_cast<locale_t>(0)) {
        return QV_E_FILE_NOT_FOUND;
    }
    const char* text = nl_langinfo_l(which, opened);
    const QVRESULT result = CopyOut(text, strlen(text), pattern, capacity, length);
    freelocale(opened);
    return result;
}

QVRESULT QVFormatTimeLocale(const char* locale, const char* pattern, int64_t seconds, int32_t utc, char* text,
                            int32_t capacity, int32_t* length) QVCORE3_NOEXCEPT
{
    if (locale == nullptr || pattern == nullptr) {
        return QV_E_POINTER;
    }
    const time_t when = static_cast<time_t>(seconds);
    tm broken{};
    if ((utc != 0 ? gmtime_r(&when, &broken) : localtime_r(&when, &broken)) == nullptr) {
        return QV_E_INVALIDARG;
    }
    locale_t opened = OpenLocale(locale);
    if (opened == static_cast<locale_t>(0)) {
        return QV_E_FILE_NOT_FOUND;
    }
    // strftime gives 0 both for an empty result and for one that did not
    // fit; a growing buffer tells them apart (a pattern can hardly ask for
    // more than 64 bytes per character).
    QVRESULT result = QV_E_INVALIDARG;
    const size_t patternLength = strlen(pattern);
    if (patternLength == 0) {
        result = CopyOut("", 0, text, capacity, length);
    } else {
        std::string buffer;
        for (size_t size = 256; size <= patternLength * 64 + 256; size *= 4) {
            try {
                buffer.resize(size);
            } catch (...) {
                result = QV_E_OUTOFMEMORY;
                break;
            }
            const size_t written = strftime_l(&buffer[0], size, pattern, &broken, opened);
            if (written > 0) {
                result = CopyOut(buffer.data(), written, text, capacity, length);
                break;
            }
        }
    }
    freelocale(opened);
    return result;
}

} // extern "C"
