#ifndef QV_CRYPTO_CIPHERINPUTSTREAM_H
#define QV_CRYPTO_CIPHERINPUTSTREAM_H

#include <qv/crypto/BlowfishCipher.h>
#include <qv/io/FilterInputStream.h>

namespace qv {
namespace crypto {

// Reads the wrapped stream through a cipher: what comes out is the
// encryption or decryption of what the wrapped stream holds. At its end the
// cipher is finished, so a decrypting stream with padding reports bad
// padding (BadPaddingException) or a truncated message
// (IllegalBlockSizeException) there, instead of handing out wrong bytes.
// Mark and reset are not supported.
class QV_EXPORT CipherInputStream : public io::FilterInputStream {
public:
    // Null pointers throw ResultException(0x80070057).
    CipherInputStream(io::InputStream* in, BlowfishCipher* cipher);
    // With a cipher of its own over key.
    CipherInputStream(io::InputStream* in, const Blowfish& key, BlowfishCipher::Direction direction,
                      Blowfish::Mode mode, Blowfish::Padding padding, const uint8_t* iv = nullptr);
    ~CipherInputStream() override;

    using io::FilterInputStream::read;
    int32_t read(signed char* buffer, int32_t count) override;
    int read() override;
    int32_t skip(int32_t count) override;
    // Bytes already deciphered and waiting.
    int32_t available() override;
    // Closes the wrapped stream; the cipher is not finished.
    void close() override;
    bool markSupported() override;
    void mark(int32_t readLimit) override;
    void reset() override;

private:
    static constexpr int32_t CHUNK = 4096;

    // Fills m_output from the wrapped stream; false at the end.
    bool fill();

    Reference<BlowfishCipher> m_cipher;
    uint8_t m_input[CHUNK];
    uint8_t m_output[CHUNK + Blowfish::BLOCK_SIZE];
    int32_t m_position = 0;
    int32_t m_count = 0;
    bool m_ended = false;
};

} // namespace crypto
} // namespace qv

#endif
