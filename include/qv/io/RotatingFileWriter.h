#ifndef QV_IO_ROTATINGFILEWRITER_H
#define QV_IO_ROTATINGFILEWRITER_H

#include <qv/core/Reference.h>
#include <qv/io/FileOutputStream.h>
#include <qv/io/OutputStreamWriter.h>
#include <qv/io/Writer.h>
#include <qv/lang/String.h>

#include <cstdint>

namespace qv {
namespace io {

// UTF-8 text into a file that rolls over by size: "app.log" is written,
// "app.log.1" holds the previous file, "app.log.2" the one before, and so on
// up to "app.log.<backups>"; the oldest falls away. A rollover happens only
// between two write calls, never inside one, so a log writer that writes
// each entry in one call never has an entry split across two files; an
// entry longer than maxBytes goes whole into a fresh file.
//
// Before a write that would take a non-empty file past maxBytes, the held
// text is flushed, the file closed, the backups renamed one step up and a
// new, empty file opened. A failing rename or open throws IoException
// ("cannot rename file: <from>: <reason>", "cannot open file: ..."); that
// write is not done, the files are left as the failure found them, and the
// next write opens the current file again (appending) and retries the
// rollover. An existing file is appended to, its size counted.
class QV_EXPORT RotatingFileWriter : public Writer {
public:
    // maxBytes < 1 or backups < 0 throw ResultException(0x80070057); with
    // no backups the file is emptied instead of renamed.
    RotatingFileWriter(const String& path, int64_t maxBytes, int32_t backups);
    ~RotatingFileWriter() override;
    RotatingFileWriter(const RotatingFileWriter&) = delete;
    RotatingFileWriter& operator=(const RotatingFileWriter&) = delete;

    using Writer::write;
    void write(const char16_t* text, int32_t count) override;
    void flush() override;
    void close() override;
    // Rolls over now (an empty file too).
    void rotate();

    const String& getPath() const noexcept { return m_path; }
    // The bytes of the current file, those not yet flushed included.
    int64_t getSize() const noexcept { return m_size; }
    int64_t getMaxBytes() const noexcept { return m_maxBytes; }
    int32_t getBackups() const noexcept { return m_backups; }

private:
    void open(bool append);
    void ensureOpen();
    String backupName(int32_t index) const;

    String m_path;
    int64_t m_maxBytes;
    int32_t m_backups;
    int64_t m_size = 0;
    bool m_closed = false;
    Reference<OutputStreamWriter> m_text;
};

} // namespace io
} // namespace qv

#endif
