#ifndef QV_CRYPTO_CIPHEROUTPUTSTREAM_H
#define QV_CRYPTO_CIPHEROUTPUTSTREAM_H

#include <qv/crypto/BlowfishCipher.h>
#include <qv/io/FilterOutputStream.h>

namespace qv {
namespace crypto {

// Writes what it is given through a cipher to the wrapped stream. ECB and
// CBC pass on whole blocks only; close() finishes the cipher (the padding
// block, or the check of it when decrypting), writes the rest, flushes and
// closes the wrapped stream, which it closes even when finishing throws.
// Writing after close throws IoException "stream closed".
class QV_EXPORT CipherOutputStream : public io::FilterOutputStream {
public:
    // Null pointers throw ResultException(0x80070057).
    CipherOutputStream(io::OutputStream* out, BlowfishCipher* cipher);
    // With a cipher of its own over key.
    CipherOutputStream(io::OutputStream* out, const Blowfish& key, BlowfishCipher::Direction direction,
                       Blowfish::Mode mode, Blowfish::Padding padding, const uint8_t* iv = nullptr);
    ~CipherOutputStream() override;

    using io::FilterOutputStream::write;
    void write(const signed char* buffer, int32_t count) override;
    void write(signed char byte) override;
    // Flushes the wrapped stream; an incomplete block stays in the cipher.
    void flush() override;
    void close() override;

private:
    static constexpr int32_t CHUNK = 4096;

    void checkOpen() const;

    Reference<BlowfishCipher> m_cipher;
    uint8_t m_output[CHUNK + Blowfish::BLOCK_SIZE];
    bool m_closed = false;
};

} // namespace crypto
} // namespace qv

#endif
