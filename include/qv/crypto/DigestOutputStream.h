#ifndef QV_CRYPTO_DIGESTOUTPUTSTREAM_H
#define QV_CRYPTO_DIGESTOUTPUTSTREAM_H

#include <qv/crypto/MessageDigest.h>
#include <qv/io/FilterOutputStream.h>

namespace qv {
namespace crypto {

// Hashes every byte written through it, once the wrapped stream has taken
// it: a write that fails leaves the digest without those bytes.
class QV_EXPORT DigestOutputStream : public io::FilterOutputStream {
public:
    // Null pointers throw ResultException(0x80070057).
    DigestOutputStream(io::OutputStream* out, MessageDigest* digest);
    ~DigestOutputStream() override;

    Reference<MessageDigest> getMessageDigest() const { return m_digest; }
    void setMessageDigest(MessageDigest* digest);
    // Hashing can be paused (false) and resumed (true); it starts on.
    void on(bool hashing) noexcept { m_on = hashing; }

    using io::FilterOutputStream::write;
    void write(const signed char* buffer, int32_t count) override;
    void write(signed char byte) override;

private:
    Reference<MessageDigest> m_digest;
    bool m_on = true;
};

} // namespace crypto
} // namespace qv

#endif
