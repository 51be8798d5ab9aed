#include <qv/io/FileReader.h>

#include <qv/io/FileInputStream.h>
#include <qv/io/InputStreamReader.h>

namespace qv {
namespace io {

namespace {

Reference<Reader> openText(const util::FilePath& path, const char16_t* encoding)
{
    auto file = makeReference<FileInputStream>(path);
    return makeReference<InputStreamReader>(file.get(), encoding);
}

} // namespace

FileReader::FileReader(const String& path, const char16_t* encoding) : FileReader(util::FilePath(path), encoding) {}

FileReader::FileReader(const util::FilePath& path, const char16_t* encoding)
    : BufferedReader(openText(path, encoding).get())
{}

FileReader::~FileReader() = default;

} // namespace io
} // namespace qv
