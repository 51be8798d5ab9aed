#include <qv/crypto/CipherInputStream.h>
#include <qv/crypto/CipherOutputStream.h>

#include <qv/core/Exception.h>
#include <qv/io/IoException.h>

#include "crypto/Arguments.h"
#include "crypto/DigestEngines.h"
#include "io/StreamSupport.h"

#include <cstring>

namespace qv {
namespace crypto {

CipherInputStream::CipherInputStream(io::InputStream* in, BlowfishCipher* cipher)
    : io::FilterInputStream(in), m_cipher(detail::requireObject(cipher))
{}

CipherInputStream::CipherInputStream(io::InputStream* in, const Blowfish& key, BlowfishCipher::Direction direction,
                                     Blowfish::Mode mode, Blowfish::Padding padding, const uint8_t* iv)
    : io::FilterInputStream(in), m_cipher(new BlowfishCipher(key, direction, mode, padding, iv))
{}

CipherInputStream::~CipherInputStream()
{
    detail::secureWipe(m_output, sizeof m_output);
    detail::secureWipe(m_input, sizeof m_input);
}

bool CipherInputStream::fill()
{
    while (m_position == m_count) {
        if (m_ended) {
            return false;
        }
        m_position = m_count = 0;
        const int32_t n = m_in->read(reinterpret_cast<signed char*>(m_input), CHUNK);
        if (n < 0) {
            m_ended = true;
            m_count = m_cipher->finish(m_output, Blowfish::BLOCK_SIZE);
        } else if (n == 0) {
            // The wrapped stream gave nothing for now; so do we.
            return true;
        } else {
            m_count = m_cipher->update(m_input, n, m_output, int32_t(sizeof m_output));
        }
    }
    return true;
}

int32_t CipherInputStream::read(signed char* buffer, int32_t count)
{
    if (!io::detail::wantsBytes(buffer, count)) {
        return 0;
    }
    if (!fill()) {
        return -1;
    }
    const int32_t n = count < m_count - m_position ? count : m_count - m_position;
    std::memcpy(buffer, m_output + m_position, size_t(n));
    m_position += n;
    return n;
}

int CipherInputStream::read()
{
    return io::InputStream::read();
}

int32_t CipherInputStream::skip(int32_t count)
{
    return io::InputStream::skip(count);
}

int32_t CipherInputStream::available()
{
    return m_count - m_position;
}

void CipherInputStream::close()
{
    m_position = m_count = 0;
    m_ended = true;
    detail::secureWipe(m_output, sizeof m_output);
    m_in->close();
}

bool CipherInputStream::markSupported()
{
    return false;
}

void CipherInputStream::mark(int32_t) {}

void CipherInputStream::reset()
{
    io::InputStream::reset();
}

CipherOutputStream::CipherOutputStream(io::OutputStream* out, BlowfishCipher* cipher)
    : io::FilterOutputStream(out), m_cipher(detail::requireObject(cipher))
{}

CipherOutputStream::CipherOutputStream(io::OutputStream* out, const Blowfish& key, BlowfishCipher::Direction direction,
                                       Blowfish::Mode mode, Blowfish::Padding padding, const uint8_t* iv)
    : io::FilterOutputStream(out), m_cipher(new BlowfishCipher(key, direction, mode, padding, iv))
{}

CipherOutputStream::~CipherOutputStream()
{
    detail::secureWipe(m_output, sizeof m_output);
}

void CipherOutputStream::checkOpen() const
{
    if (m_closed) {
        throw io::IoException(u"stream closed");
    }
}

void CipherOutputStream::write(const signed char* buffer, int32_t count)
{
    checkOpen();
    if (!io::detail::hasBytes(buffer, count)) {
        return;
    }
    const uint8_t* data = reinterpret_cast<const uint8_t*>(buffer);
    while (count > 0) {
        const int32_t piece = count < CHUNK ? count : CHUNK;
        const int32_t n = m_cipher->update(data, piece, m_output, int32_t(sizeof m_output));
        if (n > 0) {
            m_out->write(reinterpret_cast<const signed char*>(m_output), n);
        }
        data += piece;
        count -= piece;
    }
}

void CipherOutputStream::write(signed char byte)
{
    write(&byte, 1);
}

void CipherOutputStream::flush()
{
    checkOpen();
    m_out->flush();
}

void CipherOutputStream::close()
{
    if (m_closed) {
        return;
    }
    m_closed = true;
    int32_t n = 0;
    try {
        n = m_cipher->finish(m_output, Blowfish::BLOCK_SIZE);
    } catch (...) {
        m_out->close();
        throw;
    }
    if (n > 0) {
        m_out->write(reinterpret_cast<const signed char*>(m_output), n);
    }
    m_out->flush();
    m_out->close();
}

} // namespace crypto
} // namespace qv
