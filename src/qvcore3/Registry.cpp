#include "HandleTable.h"
#include "RegistryStore.h"
#include "Utf.h"

#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

using namespace qvcore3;

namespace {

// Value files: "QVR1", type, payload size (little-endian 32-bit words), the
// UTF-16LE payload, then a CRC-32 of everything before it. The check lets a
// reader refuse a file that something other than the store wrote or damaged.
constexpr char kMagic[4] = {'Q', 'V', 'R', '1'};
constexpr uint32_t kStringType = 1;
constexpr size_t kHeaderSize = 12;
constexpr size_t kMaxNameUnits = 255;
constexpr size_t kMaxValueNameUnits = 16383;
constexpr int64_t kMaxValueUnits = 16 * 1024 * 1024;
constexpr size_t kMaxFileName = 255;

const char* const kRootFolders[] = {"ClassesRoot", "CurrentUser", "LocalMachine"};

// Temporary and trash names must be unique among the writers of one store.
std::atomic<uint32_t> g_scratchCounter{0};

class RegistryKeyObject : public HandleObject {
public:
    RegistryKeyObject(std::string store, std::string folder)
        : HandleObject(Kind::RegistryKey), m_store(std::move(store)), m_folder(std::move(folder))
    {}

    const std::string m_store;
    const std::string m_folder;
};

constexpr uint32_t kKeyMask = KindBit(Kind::RegistryKey);

struct Crc32Table {
    uint32_t entries[256];
    constexpr Crc32Table() : entries()
    {
        for (uint32_t i = 0; i < 256; ++i) {
            uint32_t c = i;
            for (int k = 0; k < 8; ++k) {
                c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            }
            entries[i] = c;
        }
    }
};
constexpr Crc32Table kCrcTable;

uint32_t Crc32(const unsigned char* data, size_t size) noexcept
{
    uint32_t crc = 0xFFFFFFFFu;
    for (size_t i = 0; i < size; ++i) {
        crc = kCrcTable.entries[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    }
    return crc ^ 0xFFFFFFFFu;
}

void PutWord(std::string& out, uint32_t value)
{
    for (int i = 0; i < 4; ++i) {
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
    }
}

uint32_t GetWord(const std::string& in, size_t at) noexcept
{
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = (value << 8) | static_cast<unsigned char>(in[at + i]);
    }
    return value;
}

char AsciiLower(char c) noexcept
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualIgnoringAsciiCase(const std::string& a, const char* b) noexcept
{
    size_t i = 0;
    for (; i < a.size(); ++i) {
        if (b[i] == 0 || AsciiLower(a[i]) != AsciiLower(b[i])) {
            return false;
        }
    }
    return b[i] == 0;
}

bool LessIgnoringAsciiCase(const std::string& a, const std::string& b) noexcept
{
    const size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        const unsigned char x = static_cast<unsigned char>(AsciiLower(a[i]));
        const unsigned char y = static_cast<unsigned char>(AsciiLower(b[i]));
        if (x != y) {
            return x < y;
        }
    }
    return a.size() != b.size() ? a.size() < b.size() : a < b;
}

// Strict UTF-16 to UTF-8: an unpaired surrogate makes the name invalid.
bool AppendUtf8(const char16_t* text, size_t count, std::string& out)
{
    size_t position = 0;
    while (position < count) {
        const char32_t c = NextCodePoint(text, count, &position);
        if (c == kUnpairedSurrogate) {
            return false;
        }
        if (c < 0x80) {
            out.push_back(static_cast<char>(c));
        } else if (c < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else if (c < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | (c >> 12)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | (c >> 18)));
            out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
        }
    }
    return true;
}

// The store directory, as the environment names it now.
QVRESULT StoreDirectory(std::string& store)
{
    const char* dir = std::getenv("QV_REGISTRY_DIR");
    if (dir && *dir) {
        store = dir;
        return QV_S_OK;
    }
    if ((dir = std::getenv("XDG_CONFIG_HOME")) && *dir) {
        store = std::string(dir) + "/qvcl3/registry";
        return QV_S_OK;
    }
    if ((dir = std::getenv("HOME")) && *dir) {
        store = std::string(dir) + "/.config/qvcl3/registry";
        return QV_S_OK;
    }
    return QV_E_FILE_NOT_FOUND;
}

bool IsRoot(QVHANDLE key) noexcept
{
    return key == QV_HKEY_CLASSES_ROOT || key == QV_HKEY_CURRENT_USER || key == QV_HKEY_LOCAL_MACHINE;
}

QVRESULT ResolveKey(QVHANDLE key, std::string& store, std::string& folder)
{
    if (IsRoot(key)) {
        const QVRESULT result = StoreDirectory(store);
        if (QV_FAILED(result)) {
            return result;
        }
        folder = store + "/" + kRootFolders[key - QV_HKEY_CLASSES_ROOT];
        return QV_S_OK;
    }
    HandleRef ref(key, kKeyMask);
    if (!ref) {
        return QV_E_INVALIDARG;
    }
    store = ref.as<RegistryKeyObject>()->m_store;
    folder = ref.as<RegistryKeyObject>()->m_folder;
    return QV_S_OK;
}

// Where a value of a key lives: the key's store and folder, and the value's
// file name as it would be written.
QVRESULT ResolveValue(QVHANDLE key, const char16_t* name, std::string& store, std::string& folder, std::string& file)
{
    const QVRESULT result = ValueFileName(name, file);
    return QV_FAILED(result) ? result : ResolveKey(key, store, folder);
}

QVRESULT MakeDirectories(const std::string& path)
{
    for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        const std::string prefix = path.substr(0, slash);
        if (mkdir(prefix.c_str(), 0755) != 0 && errno != EEXIST) {
            return QVResultFromNative(errno);
        }
        if (slash == std::string::npos) {
            return QV_S_OK;
        }
    }
}

// The exclusive lock of a store, held by one writer at a time across
// processes; released by close, also when the holder dies.
class StoreLock {
public:
    StoreLock() noexcept = default;
    ~StoreLock()
    {
        if (m_fd >= 0) {
            close(m_fd);
        }
    }
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;

    QVRESULT acquire(const std::string& store)
    {
        QVRESULT result = MakeDirectories(store);
        if (QV_FAILED(result)) {
            return result;
        }
        m_fd = open((store + "/.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (m_fd < 0) {
            return QVResultFromNative(errno);
        }
        while (flock(m_fd, LOCK_EX) != 0) {
            if (errno != EINTR) {
                return QVResultFromNative(errno);
            }
        }
        return QV_S_OK;
    }

private:
    int m_fd = -1;
};

bool EntryIs(const std::string& path, bool folder)
{
    struct stat status;
    if (lstat(path.c_str(), &status) != 0) {
        return false;
    }
    return folder ? S_ISDIR(status.st_mode) : S_ISREG(status.st_mode);
}

// A key folder holds its subkeys as folders and its values as files whose
// names begin with '@'; names beginning with '.' are the store's own.
bool IsKeyEntry(const char* name) noexcept
{
    return name[0] != '.' && name[0] != '@';
}

// Finds name among the entries of folder without regard to ASCII case; found
// is the entry's name on disk.
QVRESULT FindEntry(const std::string& folder, const std::string& name, bool wantFolder, std::string& found)
{
    if (EntryIs(folder + "/" + name, wantFolder)) {
        found = name;
        return QV_S_OK;
    }
    DIR* dir = opendir(folder.c_str());
    if (!dir) {
        return errno == ENOTDIR ? QV_E_FILE_NOT_FOUND : QVResultFromNative(errno);
    }
    QVRESULT result = QV_E_FILE_NOT_FOUND;
    while (const dirent* entry = readdir(dir)) {
        if (EqualIgnoringAsciiCase(name, entry->d_name) && EntryIs(folder + "/" + entry->d_name, wantFolder)) {
            found = entry->d_name;
            result = QV_S_OK;
            break;
        }
    }
    closedir(dir);
    return result;
}

// Follows folders from start; with create, makes the missing ones (the caller
// holds the store lock).
QVRESULT Walk(const std::string& start, const std::vector<std::string>& folders, bool create, std::string& path)
{
    path = start;
    for (const std::string& name : folders) {
        std::string found;
        QVRESULT result = FindEntry(path, name, true, found);
        if (result == QV_E_FILE_NOT_FOUND && create) {
            if (mkdir((path + "/" + name).c_str(), 0755) != 0) {
                return QVResultFromNative(errno);
            }
            found = name;
            result = QV_S_OK;
        }
        if (QV_FAILED(result)) {
            return result;
        }
        path += "/";
        path += found;
    }
    return QV_S_OK;
}

QVRESULT OpenOrCreate(QVHANDLE parent, const char16_t* subKey, QVHANDLE* key, bool create)
{
    if (!key) {
        return QV_E_POINTER;
    }
    std::vector<std::string> folders;
    QVRESULT result = SplitKeyPath(subKey, folders);
    if (QV_FAILED(result)) {
        return result;
    }
    std::string store;
    std::string start;
    if (QV_FAILED(result = ResolveKey(parent, store, start))) {
        return result;
    }
    std::string path;
    if (create) {
        StoreLock lock;
        if (QV_FAILED(result = lock.acquire(store))) {
            return result;
        }
        if (IsRoot(parent) && QV_FAILED(result = MakeDirectories(start))) {
            return result;
        }
        result = Walk(start, folders, true, path);
    } else {
        result = Walk(start, folders, false, path);
        if (QV_SUCCEEDED(result) && folders.empty() && !EntryIs(path, true)) {
            result = QV_E_FILE_NOT_FOUND;
        }
    }
    if (QV_FAILED(result)) {
        return result;
    }
    RegistryKeyObject* object = new (std::nothrow) RegistryKeyObject(std::move(store), std::move(path));
    if (!object) {
        return QV_E_OUTOFMEMORY;
    }
    return HandleInsert(object, key);
}

QVRESULT WriteAll(int fd, const std::string& data)
{
    size_t done = 0;
    while (done < data.size()) {
        const ssize_t n = write(fd, data.data() + done, data.size() - done);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return QVResultFromNative(errno);
        }
        done += static_cast<size_t>(n);
    }
    return QV_S_OK;
}

// Writes the whole file beside its target and renames it into place, so the
// target always holds either the old or the new value.
QVRESULT ReplaceFile(const std::string& folder, const std::string& file, const std::string& data)
{
    const std::string scratch = folder + "/.tmp." + std::to_string(getpid()) + "." +
                                std::to_string(g_scratchCounter.fetch_add(1, std::memory_order_relaxed));
    const int fd = open(scratch.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) {
        return errno == ENOTDIR ? QV_E_FILE_NOT_FOUND : QVResultFromNative(errno);
    }
    QVRESULT result = WriteAll(fd, data);
    if (QV_SUCCEEDED(result) && fsync(fd) != 0) {
        result = QVResultFromNative(errno);
    }
    if (close(fd) != 0 && QV_SUCCEEDED(result)) {
        result = QVResultFromNative(errno);
    }
    if (QV_SUCCEEDED(result) && rename(scratch.c_str(), (folder + "/" + file).c_str()) != 0) {
        result = QVResultFromNative(errno);
    }
    if (QV_FAILED(result)) {
        unlink(scratch.c_str());
    }
    return result;
}

QVRESULT ReadValueFile(const std::string& path, std::u16string& value)
{
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return QVResultFromNative(errno);
    }
    struct stat status;
    std::string data;
    QVRESULT result = QV_S_OK;
    if (fstat(fd, &status) != 0) {
        result = QVResultFromNative(errno);
    } else if (status.st_size < static_cast<off_t>(kHeaderSize + 4) ||
               status.st_size > static_cast<off_t>(kHeaderSize + 4 + 2 * kMaxValueUnits)) {
        result = QV_E_INVALID_DATA;
    } else {
        data.resize(static_cast<size_t>(status.st_size));
        size_t done = 0;
        while (done < data.size()) {
            const ssize_t n = read(fd, &data[done], data.size() - done);
            if (n < 0 && errno == EINTR) {
                continue;
            }
            if (n <= 0) {
                result = n < 0 ? QVResultFromNative(errno) : QV_E_INVALID_DATA;
                break;
            }
            done += static_cast<size_t>(n);
        }
    }
    close(fd);
    if (QV_FAILED(result)) {
        return result;
    }
    const size_t payload = GetWord(data, 8);
    if (std::memcmp(data.data(), kMagic, 4) != 0 || GetWord(data, 4) != kStringType || payload % 2 != 0 ||
        payload != data.size() - kHeaderSize - 4 ||
        GetWord(data, data.size() - 4) != Crc32(reinterpret_cast<const unsigned char*>(data.data()), data.size() - 4)) {
        return QV_E_INVALID_DATA;
    }
    value.resize(payload / 2);
    for (size_t i = 0; i < value.size(); ++i) {
        value[i] = static_cast<char16_t>(static_cast<unsigned char>(data[kHeaderSize + 2 * i]) |
                                         (static_cast<unsigned char>(data[kHeaderSize + 2 * i + 1]) << 8));
    }
    return QV_S_OK;
}

// Reads the value whose file is named file, in any ASCII case.
QVRESULT ReadValue(const std::string& folder, const std::string& file, std::u16string& value)
{
    std::string found;
    const QVRESULT result = FindEntry(folder, file, false, found);
    if (QV_FAILED(result)) {
        return result;
    }
    return ReadValueFile(folder + "/" + found, value);
}

// The names of a key's subkeys or values, in the order enumeration gives.
QVRESULT ListEntries(const std::string& folder, bool keys, std::vector<std::string>& names)
{
    DIR* dir = opendir(folder.c_str());
    if (!dir) {
        return errno == ENOTDIR ? QV_E_FILE_NOT_FOUND : QVResultFromNative(errno);
    }
    QVRESULT result = QV_S_OK;
    try {
        while (const dirent* entry = readdir(dir)) {
            if (keys) {
                if (IsKeyEntry(entry->d_name) && EntryIs(folder + "/" + entry->d_name, true)) {
                    names.emplace_back(entry->d_name[0] == '%' ? entry->d_name + 1 : entry->d_name);
                }
            } else if (entry->d_name[0] == '@' && EntryIs(folder + "/" + entry->d_name, false)) {
                names.emplace_back(entry->d_name + 1);
            }
        }
    } catch (const std::bad_alloc&) {
        result = QV_E_OUTOFMEMORY;
    }
    closedir(dir);
    std::sort(names.begin(), names.end(), LessIgnoringAsciiCase);
    return result;
}

QVRESULT Enumerate(QVHANDLE key, uint32_t index, char16_t* name, int32_t capacity, int32_t* length, bool keys)
{
    if (!name && capacity != 0) {
        return QV_E_POINTER;
    }
    std::string store;
    std::string folder;
    QVRESULT result = ResolveKey(key, store, folder);
    if (QV_FAILED(result)) {
        return result;
    }
    std::vector<std::string> names;
    result = ListEntries(folder, keys, names);
    // A root is there before anything is written to it.
    if (QV_FAILED(result) && !(result == QV_E_FILE_NOT_FOUND && IsRoot(key))) {
        return result;
    }
    if (index >= names.size()) {
        return QV_E_NO_MORE_ITEMS;
    }
    return CopyOut(Utf16FromUtf8(names[index]), name, capacity, length);
}

int RemoveEntry(const char* path, const struct stat*, int, struct FTW*)
{
    remove(path);
    return 0;
}

} // namespace

namespace qvcore3 {

QVRESULT SplitKeyPath(const char16_t* path, std::vector<std::string>& folders)
{
    if (!path) {
        return QV_S_OK;
    }
    const size_t total = static_cast<size_t>(QVStrLenW(path));
    size_t begin = 0;
    while (begin < total) {
        size_t end = begin;
        while (end < total && path[end] != u'\\') {
            ++end;
        }
        const size_t count = end - begin;
        const char16_t* name = path + begin;
        if (count == 0 || count > kMaxNameUnits ||
            (name[0] == u'.' && (count == 1 || (count == 2 && name[1] == u'.')))) {
            return QV_E_INVALIDARG;
        }
        std::string folder;
        // Names that start like the store's own entries get a '%' in front.
        if (name[0] == u'@' || name[0] == u'%' || name[0] == u'.') {
            folder.push_back('%');
        }
        if (!AppendUtf8(name, count, folder) || folder.find('/') != std::string::npos || folder.size() > kMaxFileName) {
            return QV_E_INVALIDARG;
        }
        folders.push_back(std::move(folder));
        if (end == total - 1) {
            return QV_E_INVALIDARG; // a trailing '\'
        }
        begin = end + 1;
    }
    return QV_S_OK;
}

QVRESULT ValueFileName(const char16_t* name, std::string& file)
{
    file = "@";
    if (!name) {
        return QV_S_OK;
    }
    const size_t count = static_cast<size_t>(QVStrLenW(name));
    if (count > kMaxValueNameUnits || !AppendUtf8(name, count, file) || file.find('/') != std::string::npos ||
        file.size() > kMaxFileName) {
        return QV_E_INVALIDARG;
    }
    return QV_S_OK;
}

std::u16string Utf16FromUtf8(const std::string& text)
{
    std::u16string out;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const size_t size = text.size();
    for (size_t i = 0; i < size;) {
        const unsigned char lead = bytes[i];
        int extra = lead < 0x80 ? 0 : (lead >> 5) == 0x6 ? 1 : (lead >> 4) == 0xE ? 2 : (lead >> 3) == 0x1E ? 3 : -1;
        char32_t c = extra == 0 ? lead : extra == 1 ? (lead & 0x1F) : extra == 2 ? (lead & 0x0F) : (lead & 0x07);
        bool valid = extra >= 0;
        for (int k = 1; valid && k <= extra; ++k) {
            if (i + static_cast<size_t>(k) >= size || (bytes[i + k] & 0xC0) != 0x80) {
                valid = false;
            } else {
                c = (c << 6) | (bytes[i + k] & 0x3F);
            }
        }
        const char32_t minimum = extra == 1 ? 0x80 : extra == 2 ? 0x800 : 0x10000;
        if (!valid || (extra > 0 && c < minimum) || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
            out.push_back(u'\uFFFD');
            ++i;
            continue;
        }
        if (c >= 0x10000) {
            out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(c));
        }
        i += static_cast<size_t>(extra) + 1;
    }
    return out;
}

QVRESULT CopyOut(const std::u16string& text, char16_t* buffer, int32_t capacity, int32_t* length) noexcept
{
    if (length) {
        *length = static_cast<int32_t>(text.size());
    }
    if (capacity < 0 || text.size() >= static_cast<size_t>(capacity)) {
        return QV_E_BUFFER_TOO_SMALL;
    }
    std::memcpy(buffer, text.data(), text.size() * sizeof(char16_t));
    buffer[text.size()] = 0;
    return QV_S_OK;
}

QVRESULT ReadClassesRootDefault(const std::u16string& keyPath, std::u16string& value)
{
    std::vector<std::string> folders;
    QVRESULT result = SplitKeyPath(keyPath.c_str(), folders);
    std::string store;
    std::string start;
    std::string path;
    if (QV_FAILED(result) || QV_FAILED(result = ResolveKey(QV_HKEY_CLASSES_ROOT, store, start)) ||
        QV_FAILED(result = Walk(start, folders, false, path))) {
        return result;
    }
    return ReadValue(path, "@", value);
}

} // namespace qvcore3

extern "C" QVRESULT QVRegistryOpenKey(QVHANDLE parent, const char16_t* subKey, QVHANDLE* key) noexcept
{
    return GuardAllocation([&] { return OpenOrCreate(parent, subKey, key, false); });
}

extern "C" QVRESULT QVRegistryCreateKey(QVHANDLE parent, const char16_t* subKey, QVHANDLE* key) noexcept
{
    return GuardAllocation([&] { return OpenOrCreate(parent, subKey, key, true); });
}

extern "C" QVRESULT QVRegistryCloseKey(QVHANDLE key) noexcept
{
    if (IsRoot(key)) {
        return QV_S_OK;
    }
    return HandleClose(key, kKeyMask);
}

extern "C" QVRESULT QVRegistryDeleteKey(QVHANDLE parent, const char16_t* subKey) noexcept
{
    return GuardAllocation([&]() -> QVRESULT {
        std::vector<std::string> folders;
        QVRESULT result = SplitKeyPath(subKey, folders);
        if (QV_FAILED(result)) {
            return result;
        }
        if (folders.empty()) {
            return QV_E_INVALIDARG;
        }
        std::string store;
        std::string start;
        if (QV_FAILED(result = ResolveKey(parent, store, start))) {
            return result;
        }
        const std::string trash = store + "/.trash." + std::to_string(getpid()) + "." +
                                  std::to_string(g_scratchCounter.fetch_add(1, std::memory_order_relaxed));
        {
            StoreLock lock;
            std::string path;
            if (QV_FAILED(result = lock.acquire(store)) || QV_FAILED(result = Walk(start, folders, false, path))) {
                return result;
            }
            // One rename takes the whole tree out of sight; clearing it up
            // needs no lock.
            if (rename(path.c_str(), trash.c_str()) != 0) {
                return QVResultFromNative(errno);
            }
        }
        nftw(trash.c_str(), RemoveEntry, 16, FTW_DEPTH | FTW_PHYS);
        return QV_S_OK;
    });
}

extern "C" QVRESULT QVRegistrySetValue(QVHANDLE key, const char16_t* name, const char16_t* value,
                                       int32_t length) noexcept
{
    if (!value) {
        return QV_E_POINTER;
    }
    const int64_t units = length < 0 ? QVStrLenW(value) : length;
    if (units > kMaxValueUnits) {
        return QV_E_INVALIDARG;
    }
    return GuardAllocation([&]() -> QVRESULT {
        std::string store;
        std::string folder;
        std::string file;
        QVRESULT result = ResolveValue(key, name, store, folder, file);
        if (QV_FAILED(result)) {
            return result;
        }
        std::string data(kMagic, 4);
        PutWord(data, kStringType);
        PutWord(data, static_cast<uint32_t>(units * 2));
        data.reserve(kHeaderSize + 2 * static_cast<size_t>(units) + 4);
        for (int64_t i = 0; i < units; ++i) {
            data.push_back(static_cast<char>(value[i] & 0xFF));
            data.push_back(static_cast<char>(value[i] >> 8));
        }
        PutWord(data, Crc32(reinterpret_cast<const unsigned char*>(data.data()), data.size()));
        StoreLock lock;
        if (QV_FAILED(result = lock.acquire(store))) {
            return result;
        }
        if (!EntryIs(folder, true)) {
            return QV_E_FILE_NOT_FOUND;
        }
        // An existing value keeps the spelling it was created with.
        std::string existing;
        if (QV_SUCCEEDED(FindEntry(folder, file, false, existing))) {
            file = existing;
        }
        return ReplaceFile(folder, file, data);
    });
}

extern "C" QVRESULT QVRegistryGetValue(QVHANDLE key, const char16_t* name, char16_t* buffer, int32_t capacity,
                                       int32_t* length) noexcept
{
    if (!buffer && capacity != 0) {
        return QV_E_POINTER;
    }
    return GuardAllocation([&]() -> QVRESULT {
        std::string store;
        std::string folder;
        std::string file;
        std::u16string value;
        QVRESULT result = ResolveValue(key, name, store, folder, file);
        if (QV_FAILED(result) || QV_FAILED(result = ReadValue(folder, file, value))) {
            return result;
        }
        return CopyOut(value, buffer, capacity, length);
    });
}

extern "C" QVRESULT QVRegistryDeleteValue(QVHANDLE key, const char16_t* name) noexcept
{
    return GuardAllocation([&]() -> QVRESULT {
        std::string store;
        std::string folder;
        std::string file;
        QVRESULT result = ResolveValue(key, name, store, folder, file);
        if (QV_FAILED(result)) {
            return result;
        }
        StoreLock lock;
        if (QV_FAILED(result = lock.acquire(store)) || QV_FAILED(result = FindEntry(folder, file, false, file))) {
            return result;
        }
        return unlink((folder + "/" + file).c_str()) == 0 ? QV_S_OK : QVResultFromNative(errno);
    });
}

extern "C" QVRESULT QVRegistryEnumKey(QVHANDLE key, uint32_t index, char16_t* name, int32_t capacity,
                                      int32_t* length) noexcept
{
    return GuardAllocation([&] { return Enumerate(key, index, name, capacity, length, true); });
}

extern "C" QVRESULT QVRegistryEnumValue(QVHANDLE key, uint32_t index, char16_t* name, int32_t capacity,
                                        int32_t* length) noexcept
{
    return GuardAllocation([&] { return Enumerate(key, index, name, capacity, length, false); });
}
