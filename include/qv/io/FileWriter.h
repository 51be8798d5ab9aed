#ifndef QV_IO_FILEWRITER_H
#define QV_IO_FILEWRITER_H

#include <qv/io/BufferedWriter.h>
#include <qv/lang/String.h>
#include <qv/util/FilePath.h>

namespace qv {
namespace io {

// Text into a file: a BufferedWriter over an OutputStreamWriter over a
// FileOutputStream. Without append the file is created or emptied; with it
// every write goes to the file's end. Failures follow BufferedWriter and
// OutputStreamWriter: thrown from the write, flush or close that meets them.
class QV_EXPORT FileWriter : public BufferedWriter {
public:
    // encoding as in FileReader.
    explicit FileWriter(const String& path, bool append = false, const char16_t* encoding = nullptr);
    explicit FileWriter(const util::FilePath& path, bool append = false, const char16_t* encoding = nullptr);
    ~FileWriter() override;
};

} // namespace io
} // namespace qv

#endif
