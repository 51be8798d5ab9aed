#ifndef QV_IO_FILEINPUTSTREAM_H
#define QV_IO_FILEINPUTSTREAM_H

#include <qv/io/InputStream.h>
#include <qv/lang/String.h>
#include <qv/util/FilePath.h>

namespace qv {
namespace io {

// Reads a file. A failing system call throws IoException naming what failed
// and the file ("cannot open file: /no/such: No such file or directory");
// any operation after close throws "stream closed". Positions and sizes are
// 64-bit.
class QV_EXPORT FileInputStream : public InputStream {
public:
    // Opens the file; the name is normalised as a FilePath is.
    explicit FileInputStream(const String& name);
    explicit FileInputStream(const util::FilePath& path);
    // Reads an open descriptor; closes it on close() only when it owns it.
    // A negative handle throws ResultException(0x80070057).
    FileInputStream(int32_t handle, bool owns);
    // Closes a handle it owns; a failure there cannot be reported.
    ~FileInputStream() override;

    using InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override;
    int read() override;
    // Seeks over the bytes where the file can seek (never past its end),
    // reads them otherwise.
    int32_t skip(int32_t count) override;
    int32_t available() override;
    // A second close does nothing.
    void close() override;

    // The file name, or "handle <n>" for a stream made from a handle.
    const String& getName() const noexcept { return m_name; }
    // -1 once closed.
    int32_t getHandle() const noexcept { return m_handle; }
    int64_t getPosition();
    int64_t getSize();

private:
    String m_name;
    int32_t m_handle;
    bool m_owns;
};

} // namespace io
} // namespace qv

#endif
