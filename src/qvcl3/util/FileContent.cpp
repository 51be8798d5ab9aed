#include "util/FileContent.h"

#include <qv/io/IoException.h>
#include <qvcore3/qvcore3.h>

namespace qv {
namespace util {
namespace detail {

namespace {

bool writeAll(int32_t fd, const std::string& bytes)
{
    uint32_t done = 0;
    return QVFileWrite(fd, bytes.data(), static_cast<uint32_t>(bytes.size()), &done) == 0 && done == bytes.size();
}

std::string narrow(const String& path)
{
    return path.toUtf8();
}

[[noreturn]] void fail(const char16_t* what, const String& path)
{
    throw io::IoException(String(what).append(u": ").append(path));
}

} // namespace

bool readFile(const char* path, std::string& bytes)
{
    int32_t fd = -1;
    if (QVFileOpen(path, QV_FILE_READ, &fd) != 0)
        return false;
    bytes.clear();
    QVRESULT result = 0;
    uint32_t got = 0;
    // A regular file is read straight into a block of its size: no regrowth
    // and no copy through a chunk. What the size misses (a file growing
    // meanwhile, or one whose size says nothing) comes after in chunks.
    STRUCT_QV_FILE_STATUS status;
    if (QVFileGetStatus(fd, &status) == 0 && status.type == QV_FILE_TYPE_REGULAR && status.size > 0 &&
        status.size < 0x7FFFFFFF) {
        try {
            bytes.resize(static_cast<size_t>(status.size));
        } catch (...) {
            QVFileClose(fd);
            throw;
        }
        size_t filled = 0;
        while (filled < bytes.size() &&
               (result = QVFileRead(fd, &bytes[filled], static_cast<uint32_t>(bytes.size() - filled), &got)) == 0 &&
               got > 0)
            filled += got;
        bytes.resize(filled);
        if (result != 0) {
            QVFileClose(fd);
            return false;
        }
    }
    char chunk[65536];
    try {
        while ((result = QVFileRead(fd, chunk, sizeof chunk, &got)) == 0 && got > 0)
            bytes.append(chunk, got);
    } catch (...) {
        QVFileClose(fd);
        throw;
    }
    QVFileClose(fd);
    return result == 0;
}

bool replaceFile(const char* path, const std::string& bytes)
{
    char target[4096];
    if (QVPathResolve(path, target, sizeof target) != 0)
        return false;
    STRUCT_QV_PATH_STATUS status;
    if (QVPathGetStatus(target, &status) == 0) {
        char temporary[4096 + 8];
        int32_t fd = -1;
        const std::string prefix = std::string(target) + ".";
        if (QVPathCreateTemporary(prefix.c_str(), temporary, sizeof temporary, &fd) == 0) {
            const bool written = writeAll(fd, bytes) && QVFileSetMode(fd, status.mode) == 0 && QVFileSync(fd, 0) == 0;
            const bool closed = QVFileClose(fd) == 0;
            if (written && closed && QVPathRename(temporary, target) == 0)
                return true;
            QVPathRemove(temporary);
            return false;
        }
    }
    int32_t fd = -1;
    if (QVFileOpen(target, QV_FILE_WRITE | QV_FILE_CREATE | QV_FILE_TRUNCATE, &fd) != 0)
        return false;
    const bool written = writeAll(fd, bytes);
    return QVFileClose(fd) == 0 && written;
}

std::string readFile(const String& path)
{
    std::string bytes;
    if (!readFile(narrow(path).c_str(), bytes))
        fail(u"cannot read file", path);
    return bytes;
}

void replaceFile(const String& path, const std::string& bytes)
{
    if (!replaceFile(narrow(path).c_str(), bytes))
        fail(u"cannot write file", path);
}

} // namespace detail
} // namespace util
} // namespace qv
