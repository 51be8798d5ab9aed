#ifndef QV_IO_CHANNELS_H
#define QV_IO_CHANNELS_H

#include <qv/core/Export.h>
#include <qv/core/Reference.h>
#include <qv/io/InputStream.h>
#include <qv/io/OutputStream.h>
#include <qv/io/ReadableChannel.h>
#include <qv/io/WritableChannel.h>

namespace qv {
namespace io {

// Adapters between channels and byte streams. Each holds a reference to what
// it adapts and closes it when closed itself; a null argument throws
// ResultException(0x80070057). After close, the streams throw
// "stream closed" and the channels ResultException(0x80004007)
// "channel not open", as streams and channels do.
class QV_EXPORT Channels {
public:
    Channels() = delete;

    // Reads the channel through a stream.
    static Reference<InputStream> newInputStream(ReadableChannel* channel);
    // Writes to the channel through a stream; every write hands over all its
    // bytes.
    static Reference<OutputStream> newOutputStream(WritableChannel* channel);
    // A channel that reads the stream.
    static Reference<ReadableChannel> newChannel(InputStream* in);
    // A channel that writes to the stream.
    static Reference<WritableChannel> newChannel(OutputStream* out);
};

} // namespace io
} // namespace qv

#endif
