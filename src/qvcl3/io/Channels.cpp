#include <qv/io/Channels.h>

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/io/IoException.h>
#include <qv/util/BasicBuffer.h>

#include <cstring>

#include "io/ByteBufferAccess.h"
#include "io/StreamChecks.h"

namespace qv {
namespace io {

namespace {

[[noreturn]] void throwChannelNotOpen()
{
    throw ResultException(results::ILLEGAL_METHOD_CALL, QV_STR(u"channel not open"));
}

class ChannelInputStream : public InputStream {
public:
    explicit ChannelInputStream(ReadableChannel* channel) : m_channel(channel) {}

    using InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override
    {
        if (!m_channel)
            detail::throwStreamClosed();
        if (count < 1)
            return 0;
        detail::requireArgument(buffer != nullptr);
        // The channel appends to a buffer; the scratch one keeps its block
        // from read to read.
        m_scratch->releaseWriteLock(0);
        int32_t n = m_channel->read(m_scratch.get(), count);
        if (n > 0)
            std::memcpy(buffer, m_scratch->getData(), static_cast<size_t>(n));
        return n;
    }
    void close() override
    {
        detail::closeWrapped(m_channel, [] {});
    }

private:
    Reference<ReadableChannel> m_channel;
    Reference<util::RWByteBuffer> m_scratch = makeReference<util::RWByteBuffer>();
};

class ChannelOutputStream : public OutputStream {
public:
    explicit ChannelOutputStream(WritableChannel* channel) : m_channel(channel) {}

    using OutputStream::write;
    void write(const signed char* buffer, int32_t count) override
    {
        if (!m_channel)
            detail::throwStreamClosed();
        detail::requireArgument(count >= 0 && (buffer != nullptr || count == 0));
        while (count > 0) {
            auto bytes = makeReference<util::ROByteBuffer>(buffer, count);
            int32_t n = m_channel->write(bytes.get());
            if (n <= 0)
                throw IoException(QV_STR(u"channel accepted no bytes"));
            buffer += n;
            count -= n;
        }
    }
    void close() override
    {
        detail::closeWrapped(m_channel, [] {});
    }

private:
    Reference<WritableChannel> m_channel;
};

class StreamReadableChannel : public Object, public ReadableChannel {
    QV_DECLARE_INTERFACE_MAP()

public:
    explicit StreamReadableChannel(InputStream* in) : m_in(in) {}

    int32_t read(util::IByteBuffer* buffer, int32_t max) override
    {
        if (!m_in)
            throwChannelNotOpen();
        return detail::appendToBuffer(buffer, max,
                                      [&](signed char* data, int32_t room) { return m_in->read(data, room); });
    }
    bool isOpen() const override { return m_in != nullptr; }
    void close() override
    {
        detail::closeWrapped(m_in, [] {});
    }

private:
    Reference<InputStream> m_in;
};

class StreamWritableChannel : public Object, public WritableChannel {
    QV_DECLARE_INTERFACE_MAP()

public:
    explicit StreamWritableChannel(OutputStream* out) : m_out(out) {}

    int32_t write(const util::IByteBuffer* buffer) override
    {
        if (!m_out)
            throwChannelNotOpen();
        int32_t written = 0;
        detail::readFromBuffer(buffer, [&](const signed char* data, int32_t length) {
            m_out->write(data, length);
            written = length;
        });
        return written;
    }
    bool isOpen() const override { return m_out != nullptr; }
    void close() override
    {
        detail::closeWrapped(m_out, [] {});
    }

private:
    Reference<OutputStream> m_out;
};

QV_BEGIN_INTERFACE_MAP(StreamReadableChannel)
QV_INTERFACE_ENTRY(StreamReadableChannel, ReadableChannel)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

QV_BEGIN_INTERFACE_MAP(StreamWritableChannel)
QV_INTERFACE_ENTRY(StreamWritableChannel, WritableChannel)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

} // namespace

Reference<InputStream> Channels::newInputStream(ReadableChannel* channel)
{
    detail::requireArgument(channel != nullptr);
    return makeReference<ChannelInputStream>(channel);
}

Reference<OutputStream> Channels::newOutputStream(WritableChannel* channel)
{
    detail::requireArgument(channel != nullptr);
    return makeReference<ChannelOutputStream>(channel);
}

Reference<ReadableChannel> Channels::newChannel(InputStream* in)
{
    detail::requireArgument(in != nullptr);
    return makeReference<StreamReadableChannel>(in);
}

Reference<WritableChannel> Channels::newChannel(OutputStream* out)
{
    detail::requireArgument(out != nullptr);
    return makeReference<StreamWritableChannel>(out);
}

} // namespace io
} // namespace qv
