#include <qv/crypto/DigestInputStream.h>
#include <qv/crypto/DigestOutputStream.h>

#include "crypto/Arguments.h"

namespace qv {
namespace crypto {

DigestInputStream::DigestInputStream(io::InputStream* in, MessageDigest* digest)
    : io::FilterInputStream(in), m_digest(detail::requireObject(digest))
{}

DigestInputStream::~DigestInputStream() = default;

void DigestInputStream::setMessageDigest(MessageDigest* digest)
{
    m_digest = detail::requireObject(digest);
}

int32_t DigestInputStream::read(signed char* buffer, int32_t count)
{
    const int32_t n = m_in->read(buffer, count);
    if (m_on && n > 0) {
        m_digest->update(buffer, n);
    }
    return n;
}

int DigestInputStream::read()
{
    const int byte = m_in->read();
    if (m_on && byte >= 0) {
        m_digest->update(static_cast<uint8_t>(byte));
    }
    return byte;
}

int32_t DigestInputStream::skip(int32_t count)
{
    return io::InputStream::skip(count);
}

bool DigestInputStream::markSupported()
{
    return false;
}

void DigestInputStream::mark(int32_t) {}

void DigestInputStream::reset()
{
    io::InputStream::reset();
}

DigestOutputStream::DigestOutputStream(io::OutputStream* out, MessageDigest* digest)
    : io::FilterOutputStream(out), m_digest(detail::requireObject(digest))
{}

DigestOutputStream::~DigestOutputStream() = default;

void DigestOutputStream::setMessageDigest(MessageDigest* digest)
{
    m_digest = detail::requireObject(digest);
}

void DigestOutputStream::write(const signed char* buffer, int32_t count)
{
    m_out->write(buffer, count);
    if (m_on && count > 0) {
        m_digest->update(buffer, count);
    }
}

void DigestOutputStream::write(signed char byte)
{
    m_out->write(byte);
    if (m_on) {
        m_digest->update(static_cast<uint8_t>(byte));
    }
}

} // namespace crypto
} // namespace qv
