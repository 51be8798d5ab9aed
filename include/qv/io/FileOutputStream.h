#ifndef QV_IO_FILEOUTPUTSTREAM_H
#define QV_IO_FILEOUTPUTSTREAM_H

#include <qv/io/OutputStream.h>
#include <qv/lang/String.h>
#include <qv/util/FilePath.h>

namespace qv {
namespace io {

// Writes a file. Without flags the file is created or emptied. A failing
// system call throws IoException naming what failed and the file (a full
// disk: "cannot write file: <name>: No space left on device"); any
// operation after close throws "stream closed".
class QV_EXPORT FileOutputStream : public OutputStream {
public:
    // Keeps the contents and starts writing at the end (one seek at open).
    static constexpr uint32_t ATEND = 1;
    // Keeps the contents and every write goes to the end, also when another
    // writer has made the file longer meanwhile.
    static constexpr uint32_t APPEND = 2;

    // append: the APPEND flag.
    explicit FileOutputStream(const String& name, bool append = false);
    FileOutputStream(const String& name, uint32_t flags);
    // As the uint32_t form, so that FileOutputStream(name, 0) is not ambiguous.
    FileOutputStream(const String& name, int flags);
    explicit FileOutputStream(const util::FilePath& path, bool append = false);
    FileOutputStream(const util::FilePath& path, uint32_t flags);
    FileOutputStream(const util::FilePath& path, int flags);
    // Writes to an open descriptor; closes it on close() only when it owns
    // it. A negative handle throws ResultException(0x80070057).
    FileOutputStream(int32_t handle, bool owns);
    ~FileOutputStream() override;

    using OutputStream::write;
    void write(const signed char* buffer, int32_t count) override;
    // Nothing is held here: the bytes are with the system once written.
    void flush() override;
    void close() override;

    const String& getName() const noexcept { return m_name; }
    int32_t getHandle() const noexcept { return m_handle; }
    uint32_t getFlags() const noexcept { return m_flags; }

private:
    void open(const util::FilePath& path, uint32_t flags);

    String m_name;
    int32_t m_handle = -1;
    bool m_owns = false;
    // Decided once for a file this stream opened itself: a descriptor handed
    // in may be replaced behind its back (dup2 onto standard output), so it
    // is asked about on every write.
    bool m_cannotRaiseSigpipe = false;
    uint32_t m_flags = 0;
};

} // namespace io
} // namespace qv

#endif
