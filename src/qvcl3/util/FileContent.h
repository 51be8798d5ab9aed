#ifndef QVCL3_UTIL_FILECONTENT_H
#define QVCL3_UTIL_FILECONTENT_H

#include <qv/lang/String.h>

#include <string>

namespace qv {
namespace util {
namespace detail {

// The whole file as bytes; false when it can't be opened or read.
bool readFile(const char* path, std::string& bytes);
// Replaces the file's content so that a failure half-way (a full disk, a
// crash) leaves the old file whole: the new bytes go to a file beside the
// target (the end of any symbolic link), reach the disk, and are renamed
// over it with the old file's permissions. Where no file can be made beside
// it, the file is rewritten in place. False when nothing could be written.
bool replaceFile(const char* path, const std::string& bytes);

// The same for callers that throw: IoException naming what failed and the
// file.
std::string readFile(const String& path);
void replaceFile(const String& path, const std::string& bytes);

} // namespace detail
} // namespace util
} // namespace qv

#endif
