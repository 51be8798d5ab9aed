#ifndef QV_IO_FILECHANNEL_H
#define QV_IO_FILECHANNEL_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/io/ReadableChannel.h>
#include <qv/io/WritableChannel.h>
#include <qv/lang/String.h>

#include <cstdint>

namespace qv {
namespace io {

class FileLock;

// A file read and written at 64-bit positions: sequentially from its own
// position, or at a position given with each call, which leaves the channel's
// position alone. Also the file's size, truncation, syncing to the device and
// advisory locks of the whole file or of a range, which exclude every other
// channel holding a lock on that range, in this process or another.
//
// Failures of the file are IoException naming the operation and the file;
// every operation of a closed channel but isOpen() and close() throws
// ResultException(0x80004007) "channel not open". One thread at a time.
class QV_EXPORT FileChannel : public Object, public ReadableChannel, public WritableChannel {
    QV_DECLARE_INTERFACE_MAP()

public:
    // Open modes.
    static constexpr uint32_t READ = 0x1;
    static constexpr uint32_t WRITE = 0x2;
    // Create the file when it is missing.
    static constexpr uint32_t CREATE = 0x4;
    // Cut the file to nothing on opening (with WRITE).
    static constexpr uint32_t TRUNCATE = 0x8;
    // Sequential writes go to the end of the file, wherever that is by then.
    static constexpr uint32_t APPEND = 0x10;
    // Fail when the file exists (with CREATE).
    static constexpr uint32_t EXCLUSIVE = 0x20;

    // Opens path; a mode without READ and WRITE or with unknown bits throws
    // ResultException(0x80070057); a file that can't be opened IoException
    // "cannot open file: <path> (0x<code>)".
    static Reference<FileChannel> open(const String& path, uint32_t mode);

    ~FileChannel() override;
    FileChannel(const FileChannel&) = delete;
    FileChannel& operator=(const FileChannel&) = delete;

    int32_t read(util::IByteBuffer* buffer, int32_t max) override;
    // At position; -1 at or beyond the end.
    int32_t read(util::IByteBuffer* buffer, int32_t max, int64_t position);
    int32_t write(const util::IByteBuffer* buffer) override;
    // At position; the file grows as needed (with zeros in a gap).
    int32_t write(const util::IByteBuffer* buffer, int64_t position);

    // Where the next sequential read or write happens. Setting a position
    // beyond the end is allowed: a read there is at the end, a write there
    // grows the file.
    int64_t position() const;
    void position(int64_t newPosition);
    int64_t size() const;
    // Cuts the file to size bytes if it is longer (a longer size changes
    // nothing) and moves the position back to size if it was beyond.
    void truncate(int64_t size);
    // Writes the file's data, and with metadata its attributes, through to
    // the device.
    void force(bool metadata);

    // Waits until the range (size 0: the whole file, however far it grows)
    // can be locked, exclusively or shared; the lock lasts until released,
    // until its last reference goes or until the channel closes.
    Reference<FileLock> lock(int64_t position = 0, int64_t size = 0, bool shared = false);
    // The same without waiting: null while another channel holds a
    // conflicting lock.
    Reference<FileLock> tryLock(int64_t position = 0, int64_t size = 0, bool shared = false);

    bool isOpen() const override;
    void close() override;

    // The file's path as given to open().
    String getPath() const;

private:
    friend class FileLock;
    FileChannel(const String& path, int32_t fd, uint32_t mode);
    void ensureOpen() const;
    void ensureMode(uint32_t needed) const;
    [[noreturn]] void fail(const char16_t* operation, Result code) const;
    int32_t readAt(util::IByteBuffer* buffer, int32_t max, int64_t position);
    int32_t writeAt(const util::IByteBuffer* buffer, int64_t position);
    Reference<FileLock> takeLock(int64_t position, int64_t size, bool shared, bool wait);
    void unlock(int64_t position, int64_t size);

    String m_path;
    int32_t m_fd;
    uint32_t m_mode;
    int64_t m_position = 0;
};

// A lock on a range of a file, taken through FileChannel::lock or tryLock.
class QV_EXPORT FileLock : public Object {
public:
    ~FileLock() override;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    int64_t position() const noexcept { return m_position; }
    // 0: the whole file.
    int64_t size() const noexcept { return m_size; }
    bool isShared() const noexcept { return m_shared; }
    // Until released or until the channel closes.
    bool isValid() const;
    // Gives the range free; a second release does nothing.
    void release();
    Reference<FileChannel> channel() const { return m_channel; }

private:
    friend class FileChannel;
    FileLock(FileChannel* channel, int64_t position, int64_t size, bool shared);

    Reference<FileChannel> m_channel;
    int64_t m_position;
    int64_t m_size;
    bool m_shared;
    bool m_valid = true;
};

} // namespace io
} // namespace qv

#endif
