#ifndef QV_IO_FILEREADER_H
#define QV_IO_FILEREADER_H

#include <qv/io/BufferedReader.h>
#include <qv/lang/String.h>
#include <qv/util/FilePath.h>

namespace qv {
namespace io {

// The text of a file: a BufferedReader over an InputStreamReader over a
// FileInputStream, so readLine, mark and reset work at once.
class QV_EXPORT FileReader : public BufferedReader {
public:
    // encoding: looked up without regard to case; null: the default
    // encoding. A file that can't be opened throws the FileInputStream's
    // IoException, an unknown encoding UnknownEncodingException.
    explicit FileReader(const String& path, const char16_t* encoding = nullptr);
    explicit FileReader(const util::FilePath& path, const char16_t* encoding = nullptr);
    ~FileReader() override;
};

} // namespace io
} // namespace qv

#endif
