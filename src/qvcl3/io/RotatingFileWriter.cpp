#include <qv/io/RotatingFileWriter.h>

#include <qv/io/IoException.h>

#include "io/FileSupport.h"

#include <qvcore3/qvcore3.h>

namespace qv {
namespace io {

namespace {

// The UTF-8 length of UTF-16 text; a lone surrogate counts as the three
// bytes of its replacement.
int64_t utf8Length(const char16_t* text, int32_t count)
{
    int64_t bytes = 0;
    for (int32_t i = 0; i < count; ++i) {
        const char16_t unit = text[i];
        if (unit < 0x80)
            bytes += 1;
        else if (unit < 0x800)
            bytes += 2;
        else if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < count && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            bytes += 4;
            ++i;
        } else
            bytes += 3;
    }
    return bytes;
}

} // namespace

RotatingFileWriter::RotatingFileWriter(const String& path, int64_t maxBytes, int32_t backups)
    : m_path(path), m_maxBytes(maxBytes), m_backups(backups)
{
    if (maxBytes < 1 || backups < 0 || path.getLength() == 0)
        throw ResultException(results::INVALIDARG);
    open(true);
}

RotatingFileWriter::~RotatingFileWriter()
{
    try {
        close();
    } catch (const Exception&) {
        // A destructor can report nothing; close() reports to those who call it.
    }
}

String RotatingFileWriter::backupName(int32_t index) const
{
    String name(m_path);
    name += u".";
    name += String::valueOf(index);
    return name;
}

void RotatingFileWriter::open(bool append)
{
    const auto file = makeReference<FileOutputStream>(m_path, append);
    int64_t size = 0;
    if (append) {
        STRUCT_QV_FILE_STATUS status{};
        const Result result = QVFileGetStatus(file->getHandle(), &status);
        if (failed(result))
            detail::throwFileError(u"cannot read file status", m_path, result);
        size = status.size;
    }
    m_text = makeReference<OutputStreamWriter>(file.get(), u"UTF-8");
    m_size = size;
}

void RotatingFileWriter::ensureOpen()
{
    if (m_closed)
        throw IoException(u"stream closed");
    if (!m_text)
        open(true);
}

void RotatingFileWriter::write(const char16_t* text, int32_t count)
{
    const int32_t units = measure(text, count);
    ensureOpen();
    if (units == 0)
        return;
    const int64_t bytes = utf8Length(text, units);
    if (m_size > 0 && m_size + bytes > m_maxBytes)
        rotate();
    m_text->write(text, units);
    m_size += bytes;
}

void RotatingFileWriter::rotate()
{
    ensureOpen();
    // Forgotten before closing: after a failed close the next write opens
    // the file again instead of meeting a closed stream.
    const Reference<OutputStreamWriter> text = m_text;
    m_text = nullptr;
    text->close();
    if (m_backups > 0) {
        for (int32_t index = m_backups; index >= 1; --index) {
            const String from = index == 1 ? m_path : backupName(index - 1);
            const std::string fromNarrow = util::FilePath(from).toNarrow();
            STRUCT_QV_PATH_STATUS status{};
            if (failed(QVPathGetStatus(fromNarrow.c_str(), &status)))
                continue; // no such backup yet
            const Result result =
                QVPathRename(fromNarrow.c_str(), util::FilePath(backupName(index)).toNarrow().c_str());
            if (failed(result))
                detail::throwFileError(u"cannot rename file", from, result);
        }
    }
    open(false);
}

void RotatingFileWriter::flush()
{
    ensureOpen();
    m_text->flush();
}

void RotatingFileWriter::close()
{
    if (m_closed)
        return;
    m_closed = true;
    if (m_text) {
        const Reference<OutputStreamWriter> text = m_text;
        m_text = nullptr;
        text->close();
    }
}

} // namespace io
} // namespace qv
