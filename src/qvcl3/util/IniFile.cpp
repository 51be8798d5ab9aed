#include <qv/util/IniFile.h>

#include <qv/core/Boundary.h>
#include <qv/text/charset/ByteToCharConverter.h>
#include <qv/text/charset/CharToByteConverter.h>
#include <qvcore3/qvcore3.h>

#include "util/CopyText.h"
#include "util/FileContent.h"
#include "util/IniFileLayout.h"
#include "util/IniFileLockHold.h"

#include <cctype>
#include <cstring>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

namespace qv {
namespace util {

namespace {

using text::charset::ByteToCharConverter;
using text::charset::CharToByteConverter;

// Paths go to the file system as narrow text of at most 260 bytes, as they
// always have; a longer path names no file.
const int32_t kNarrowPathBytes = 261;
// A line is read 511 bytes at most; a longer one is read as several.
const size_t kLineBytes = 511;
const char16_t kTrimmed[] = u" \t\r\n";

bool toNarrowPath(const String& path, char (&narrow)[kNarrowPathBytes])
{
    return path.getLength() > 0 &&
           QVUnicodeToAnsi(path.getData(), path.getLength(), narrow, kNarrowPathBytes, nullptr) == 0;
}

String decodeStrictly(ByteToCharConverter& decoder, const char* bytes, size_t length)
{
    std::u16string units(length * static_cast<size_t>(decoder.getMaxCharsPerByte()) + 8, u'\0');
    const int32_t end = static_cast<int32_t>(length);
    const int32_t room = static_cast<int32_t>(units.size());
    int32_t in = 0;
    int32_t out = 0;
    decoder.reset();
    decoder.convert(reinterpret_cast<const signed char*>(bytes), &in, end, &units[0], &out, room);
    decoder.flush(&units[0], &out, room);
    return String(units.data(), out);
}

// A line the encoding can't read (malformed bytes throw whatever the
// substitution mode) is read byte for byte as ISO-8859-1 instead: one bad
// byte must not cost the caller the whole file, and the line keeps its
// brackets and '='.
String decode(ByteToCharConverter& decoder, const char* bytes, size_t length)
{
    String text;
    const Result result = qvcom::guardBoundary([&] { text = decodeStrictly(decoder, bytes, length); });
    if (result == results::OK)
        return text;
    if (result == results::OUTOFMEMORY)
        throw OutOfMemoryException();
    text = String();
    for (size_t i = 0; i < length; ++i)
        text.append(static_cast<char16_t>(static_cast<unsigned char>(bytes[i])));
    return text;
}

// Whether the decoder reads every byte below 0x80 as the character of the
// same number, asked of the decoder itself rather than of its name: such a
// decoder lets plain ASCII key lines skip the converter, the cost of most
// loads.
bool readsAsciiAsItself(ByteToCharConverter& decoder)
{
    char probe[127];
    for (int i = 0; i < 127; ++i)
        probe[i] = static_cast<char>(i + 1);
    String text;
    const Result result = qvcom::guardBoundary([&] { text = decodeStrictly(decoder, probe, sizeof probe); });
    if (result == results::OUTOFMEMORY)
        throw OutOfMemoryException();
    if (result != results::OK || text.getLength() != 127)
        return false;
    for (int i = 0; i < 127; ++i) {
        if (text.getCharAt(i) != static_cast<char16_t>(i + 1))
            return false;
    }
    return true;
}

// ASCII without the bytes that switch a stateful decoder's mode (escape,
// shift out, shift in): such a line decodes to the same units whatever the
// decoder's state.
bool isPlainAscii(const char* bytes, size_t length)
{
    const uint64_t highs = 0x8080808080808080ull;
    const uint64_t below32 = 0x2020202020202020ull;
    size_t i = 0;
    for (; i + 8 <= length; i += 8) {
        uint64_t word;
        std::memcpy(&word, bytes + i, sizeof word);
        if (word & highs)
            return false;
        // Tabs and line ends are control bytes too: only a word holding a
        // byte below 0x20 is looked at byte by byte.
        if (((word - below32) & ~word & highs) == 0)
            continue;
        for (size_t j = i; j < i + 8; ++j) {
            const unsigned char c = static_cast<unsigned char>(bytes[j]);
            if (c == 0x1B || c == 0x0E || c == 0x0F)
                return false;
        }
    }
    for (; i < length; ++i) {
        const unsigned char c = static_cast<unsigned char>(bytes[i]);
        if (c >= 0x80 || c == 0x1B || c == 0x0E || c == 0x0F)
            return false;
    }
    return true;
}

bool isTrimmed(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// The bytes of a plain ASCII run as UTF-16 units, into units (room for
// kLineBytes).
int32_t widen(const char* bytes, size_t length, char16_t* units)
{
    for (size_t i = 0; i < length; ++i)
        units[i] = static_cast<unsigned char>(bytes[i]);
    return static_cast<int32_t>(length);
}

// A plain ASCII key line split as the general path splits a decoded one:
// the last character dropped, the text cut at the first '=', both sides
// trimmed; key and value come out as units. False when the line has no '='.
bool splitAsciiKeyLine(const char* line, size_t length, char16_t* key, int32_t& keyLength, char16_t* value,
                       int32_t& valueLength)
{
    const size_t kept = length - 1;
    const void* found = std::memchr(line, '=', kept);
    if (!found)
        return false;
    const size_t equals = static_cast<size_t>(static_cast<const char*>(found) - line);
    size_t begin = 0;
    size_t end = equals;
    while (begin < end && isTrimmed(line[begin]))
        ++begin;
    while (end > begin && isTrimmed(line[end - 1]))
        --end;
    keyLength = widen(line + begin, end - begin, key);
    begin = equals + 1;
    end = kept;
    while (begin < end && isTrimmed(line[begin]))
        ++begin;
    while (end > begin && isTrimmed(line[end - 1]))
        --end;
    valueLength = widen(line + begin, end - begin, value);
    return true;
}

std::string encode(CharToByteConverter& encoder, const String& value)
{
    const int32_t length = value.getLength();
    std::string bytes(static_cast<size_t>(length) * static_cast<size_t>(encoder.getMaxBytesPerChar()) + 8, '\0');
    const int32_t room = static_cast<int32_t>(bytes.size());
    int32_t in = 0;
    int32_t out = 0;
    encoder.reset();
    signed char* target = reinterpret_cast<signed char*>(&bytes[0]);
    encoder.convert(value.getData(), &in, length, target, &out, room);
    encoder.flush(target, &out, room);
    bytes.resize(static_cast<size_t>(out));
    return bytes;
}

// Each operation holds the file's lock for its whole length; failures inside
// become codes.
template <class Body>
Result underLock(const Reference<ipc::Semaphore>& lock, Body&& body)
{
    return qvcom::guardBoundary([&]() -> Result {
        IniFileLockHold hold(lock);
        return body();
    });
}

bool isSubsetName(const String& name, const String& parent)
{
    const int32_t length = parent.getLength();
    if (name.getLength() <= length + 1 || !name.startsWith(parent))
        return false;
    const char16_t separator = name.getCharAt(length);
    return separator == u'\\' || separator == u'/' || separator == u'.';
}

} // namespace

IniFile::IniFile(const char16_t* path, const char* lockName, short flags)
    : m_path(path ? String(path) : String()), m_modified(0), m_flags(flags), m_utf8(false)
{
    if (lockName)
        m_lock = Reference<ipc::Semaphore>(new ipc::Semaphore(lockName, 1));
    if (m_flags & KEEP_LAYOUT)
        m_layout.reset(new IniFileLayout());
}

IniFile::~IniFile() = default;

Result IniFile::GetValue(const char16_t* set, const char16_t* key, char16_t* buffer, unsigned int size)
{
    if (!set || !key || !buffer)
        return results::POINTER;
    return underLock(m_lock, [&]() -> Result {
        checkAndUpdate();
        auto found = m_sets.find(String(set));
        if (found == m_sets.end())
            return results::FILE_NOT_FOUND;
        auto value = found->second.find(String(key));
        if (value == found->second.end())
            return results::FILE_NOT_FOUND;
        return detail::copyText(value->second, buffer, size);
    });
}

Result IniFile::AddKey(const char16_t* set, const char16_t* key, const char16_t* value, bool replace)
{
    if (!set || !key || !value)
        return results::POINTER;
    return underLock(m_lock, [&]() -> Result {
        checkAndUpdate();
        const String setName(set);
        const String keyName(key);
        if (KeyExists(setName, keyName) && !replace)
            return static_cast<Result>(0x800700B7u);
        m_sets[setName][keyName] = String(value);
        if (m_layout)
            m_layout->keyAdded(setName, keyName);
        return WriteToFile(nullptr);
    });
}

Result IniFile::DeleteKey(const char16_t* set, const char16_t* key)
{
    if (!set || !key)
        return results::POINTER;
    return underLock(m_lock, [&]() -> Result {
        checkAndUpdate();
        const String setName(set);
        const String keyName(key);
        if (!KeyExists(setName, keyName))
            return results::FILE_NOT_FOUND;
        m_sets[setName].erase(keyName);
        if (m_layout)
            m_layout->keyDeleted(setName, keyName);
        return WriteToFile(nullptr);
    });
}

Result IniFile::DeleteSet(const char16_t* set)
{
    if (!set)
        return results::POINTER;
    return underLock(m_lock, [&]() -> Result {
        checkAndUpdate();
        internalDeleteSet(String(set));
        return WriteToFile(nullptr);
    });
}

void IniFile::checkAndUpdate()
{
    char narrow[kNarrowPathBytes];
    STRUCT_QV_PATH_STATUS status;
    if (!toNarrowPath(m_path, narrow) || QVPathGetStatus(narrow, &status) != 0)
        return;
    if (status.modifiedNanoseconds > m_modified)
        load();
    m_modified = status.modifiedNanoseconds;
}

int IniFile::load()
{
    m_sets.clear();
    m_utf8 = false;
    if (m_layout)
        m_layout->clear();
    char narrow[kNarrowPathBytes];
    std::string data;
    if (!toNarrowPath(m_path, narrow) || !detail::readFile(narrow, data))
        return -1;

    Reference<ByteToCharConverter> narrowDecoder = ByteToCharConverter::getDefaultConverter();
    Reference<ByteToCharConverter> utf8Decoder = ByteToCharConverter::getConverter(u"UTF-8");
    narrowDecoder->setSubstitutionMode(true);
    utf8Decoder->setSubstitutionMode(true);
    const bool narrowReadsAscii = readsAsciiAsItself(*narrowDecoder);
    // A set named again in the middle of the file gathers the keys of both
    // sections; later values win.
    auto gather = [this](const String& set, Keys& found) {
        auto place = m_sets.try_emplace(set);
        if (place.second || place.first->second.empty()) {
            place.first->second.swap(found);
            return;
        }
        for (auto& key : found)
            place.first->second[key.first] = key.second;
    };

    String current;
    Keys keys;
    bool headerSeen = false;
    bool stopped = false;
    size_t position = 0;
    while (position < data.size()) {
        const size_t limit = std::min(data.size(), position + kLineBytes);
        const void* newline = std::memchr(data.data() + position, '\n', limit - position);
        const size_t lineEnd = newline ? static_cast<const char*>(newline) - data.data() + 1 : limit;
        // Only a layout-keeping file records its lines; the others build
        // no record at all, most of a load's cost otherwise.
        std::optional<IniFileLayout::Line> record;
        if (m_layout) {
            record.emplace();
            record->bytes.assign(data, position, lineEnd - position);
        }
        const char* line = data.data() + position;
        // The line is handled as the C string it was read into.
        size_t length = strnlen(line, lineEnd - position);
        const size_t start = position;
        position = lineEnd;
        auto keep = [&] {
            if (m_layout)
                m_layout->addLine(std::move(*record));
        };
        if (stopped) {
            keep();
            continue;
        }
        // Checked on every line, not only the first: a mark switches the rest
        // of the file to UTF-8.
        size_t skipped = 0;
        if (length >= 3 && std::memcmp(line, "\xEF\xBB\xBF", 3) == 0) {
            m_utf8 = true;
            line += 3;
            length -= 3;
            skipped = 3;
        }
        const unsigned char first = length ? static_cast<unsigned char>(line[0]) : 0;
        if (first == '#' || first == ';' || first == ':' || first == '\n' || first == 0 || std::isspace(first)) {
            keep();
            continue;
        }
        // Where the key and value went in the table (a later key replaces an
        // earlier one).
        Keys::iterator stored;
        if (first != '[' && (m_utf8 || narrowReadsAscii) && isPlainAscii(line, length)) {
            // Both Strings are made right inside the table's node: no
            // temporary to move and no String left behind to release.
            char16_t keyUnits[kLineBytes];
            char16_t valueUnits[kLineBytes];
            int32_t keyLength = 0;
            int32_t valueLength = 0;
            if (!splitAsciiKeyLine(line, length, keyUnits, keyLength, valueUnits, valueLength)) {
                stopped = true;
                keep();
                continue;
            }
            const size_t before = keys.size();
            // Keys of a generated or sorted file come in order: the hint
            // makes their insertion constant time.
            stored = keys.emplace_hint(keys.end(), std::piecewise_construct, std::forward_as_tuple(keyUnits, keyLength),
                                       std::forward_as_tuple(valueUnits, valueLength));
            if (keys.size() == before)
                stored->second.setTo(valueUnits, valueLength);
        } else {
            String lineText = decode(m_utf8 ? *utf8Decoder : *narrowDecoder, line, length);
            if (first == '[') {
                // A set named "[]" is stored here like any other; only the
                // last section of the file needs a name to be kept.
                if (!headerSeen)
                    headerSeen = true;
                else
                    gather(current, keys);
                keys.clear();
                const int32_t close = lineText.lastIndexOf(u']');
                if (close < 0) {
                    stopped = true;
                    keep();
                    continue;
                }
                current = lineText.substring(1, close);
                if (record) {
                    record->kind = IniFileLayout::HEADER;
                    record->set = current;
                }
                keep();
                continue;
            }
            lineText.remove(lineText.getLength() - 1);
            const int32_t equals = lineText.indexOf(u'=');
            if (equals < 0) {
                stopped = true;
                keep();
                continue;
            }
            String key = lineText.substring(0, equals);
            String value = lineText.substring(equals + 1);
            key.trim(kTrimmed, 4);
            value.trim(kTrimmed, 4);
            stored = keys.insert_or_assign(keys.end(), std::move(key), std::move(value));
        }
        if (m_layout && headerSeen) {
            // Bytes and characters meet at '=' and at the trimmed white
            // space, which are single bytes in every encoding read here.
            const char* bytes = data.data() + start + skipped;
            size_t begin = static_cast<const char*>(std::memchr(bytes, '=', length)) - bytes + 1;
            // The dropped last character is taken as one byte: the line end
            // where there is one, which is where a rewrite keeps the rest.
            size_t end = length - 1;
            while (begin < end && std::strchr(" \t\r\n", bytes[begin]))
                ++begin;
            while (end > begin && std::strchr(" \t\r\n", bytes[end - 1]))
                --end;
            record->kind = IniFileLayout::KEY;
            record->set = current;
            record->key = stored->first;
            record->value = stored->second;
            record->valueBegin = begin + skipped;
            record->valueEnd = end + skipped;
        }
        keep();
    }
    // The last section replaces its set rather than merging: the format
    // always behaved so, and callers' files depend on it.
    if (current.getLength() > 0)
        m_sets[current] = std::move(keys);
    return 0;
}

bool IniFile::KeyExists(const String& set, const String& key) const
{
    auto found = m_sets.find(set);
    return found != m_sets.end() && found->second.count(key) != 0;
}

bool IniFile::SetExists(const String& set) const
{
    return m_sets.count(set) != 0;
}

int IniFile::WriteToFile(const char16_t* path)
{
    char narrow[kNarrowPathBytes];
    if (!toNarrowPath(path ? String(path) : m_path, narrow))
        return 1;
    Reference<CharToByteConverter> encoder =
        m_utf8 ? CharToByteConverter::getConverter(u"UTF-8") : CharToByteConverter::getDefaultConverter();
    encoder->setSubstitutionMode(true);
    auto narrowText = [&](const String& value) { return encode(*encoder, value); };
    std::string bytes;
    if (m_layout) {
        bytes = m_layout->render(m_sets, narrowText);
    } else {
        if (m_utf8)
            bytes = "\xEF\xBB\xBF";
        for (const auto& set : m_sets) {
            bytes += '[';
            bytes += narrowText(set.first);
            bytes += "]\n";
            for (const auto& key : set.second) {
                bytes += narrowText(key.first);
                bytes += '=';
                bytes += narrowText(key.second);
                bytes += '\n';
            }
        }
    }
    return detail::replaceFile(narrow, bytes) ? 0 : 1;
}

void IniFile::internalDeleteSet(const String& set)
{
    for (const String& subset : ListSubsets(set)) {
        if (m_layout)
            m_layout->setDeleted(subset, ListKeys(subset));
        m_sets.erase(subset);
    }
    if (m_layout)
        m_layout->setDeleted(set, ListKeys(set));
    m_sets.erase(set);
}

std::vector<String> IniFile::ListSets() const
{
    std::vector<String> names;
    names.reserve(m_sets.size());
    for (const auto& set : m_sets)
        names.push_back(set.first);
    return names;
}

std::vector<String> IniFile::ListKeys(const String& set) const
{
    std::vector<String> names;
    auto found = m_sets.find(set);
    if (found != m_sets.end()) {
        for (const auto& key : found->second)
            names.push_back(key.first);
    }
    return names;
}

std::vector<String> IniFile::ListSubsets(const String& set) const
{
    std::vector<String> names;
    for (const auto& candidate : m_sets) {
        if (isSubsetName(candidate.first, set))
            names.push_back(candidate.first);
    }
    return names;
}

} // namespace util
} // namespace qv
