#ifndef QV_CRYPTO_DIGESTINPUTSTREAM_H
#define QV_CRYPTO_DIGESTINPUTSTREAM_H

#include <qv/crypto/MessageDigest.h>
#include <qv/io/FilterInputStream.h>

namespace qv {
namespace crypto {

// Hashes every byte read through it (skipped bytes included: they are read,
// not skipped on the wrapped stream). Mark and reset are not supported, since
// reading a stretch twice would hash it twice.
class QV_EXPORT DigestInputStream : public io::FilterInputStream {
public:
    // Null pointers throw ResultException(0x80070057).
    DigestInputStream(io::InputStream* in, MessageDigest* digest);
    ~DigestInputStream() override;

    Reference<MessageDigest> getMessageDigest() const { return m_digest; }
    void setMessageDigest(MessageDigest* digest);
    // Hashing can be paused (false) and resumed (true); it starts on.
    void on(bool hashing) noexcept { m_on = hashing; }

    using io::FilterInputStream::read;
    int32_t read(signed char* buffer, int32_t count) override;
    int read() override;
    int32_t skip(int32_t count) override;
    bool markSupported() override;
    void mark(int32_t readLimit) override;
    void reset() override;

private:
    Reference<MessageDigest> m_digest;
    bool m_on = true;
};

} // namespace crypto
} // namespace qv

#endif
