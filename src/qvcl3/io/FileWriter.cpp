#include <qv/io/FileWriter.h>

#include <qv/io/FileOutputStream.h>
#include <qv/io/OutputStreamWriter.h>

namespace qv {
namespace io {

namespace {

Reference<Writer> createText(const util::FilePath& path, bool append, const char16_t* encoding)
{
    // The encoder first: an unknown encoding must not empty the file.
    auto encoder = text::charset::CharToByteConverter::getConverter(encoding);
    auto file = makeReference<FileOutputStream>(path, append);
    return makeReference<OutputStreamWriter>(file.get(), encoding);
}

} // namespace

FileWriter::FileWriter(const String& path, bool append, const char16_t* encoding)
    : FileWriter(util::FilePath(path), append, encoding)
{}

FileWriter::FileWriter(const util::FilePath& path, bool append, const char16_t* encoding)
    : BufferedWriter(createText(path, append, encoding).get())
{}

FileWriter::~FileWriter() = default;

} // namespace io
} // namespace qv
