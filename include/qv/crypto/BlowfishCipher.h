#ifndef QV_CRYPTO_BLOWFISHCIPHER_H
#define QV_CRYPTO_BLOWFISHCIPHER_H

#include <qv/crypto/Blowfish.h>

namespace qv {
namespace crypto {

// One direction of Blowfish in one mode, fed in pieces: the engine of the
// cipher streams and of Blowfish::encrypt / decrypt. It keeps its own copy
// of the key schedule (wiped with it) and the chaining state.
//
// update() gives out what the mode can already produce: ECB and CBC hold
// back an incomplete block, and a decrypting cipher with padding also holds
// back the last whole block until finish() can check its padding. After
// finish(), also after one that rejects the input (IllegalBlockSizeException,
// BadPaddingException), the cipher starts a new message with
// the IV it was made with.
class QV_EXPORT BlowfishCipher : public Object {
public:
    enum Direction { ENCRYPT, DECRYPT };

    // key must be keyed (InvalidKeyException). iv: 8 bytes, required for
    // CBC, CFB64 and OFB64 (ResultException(0x80070057) when null), ignored
    // for ECB. Padding with CFB64 or OFB64 throws ResultException(0x80070057).
    BlowfishCipher(const Blowfish& key, Direction direction, Blowfish::Mode mode, Blowfish::Padding padding,
                   const uint8_t* iv = nullptr);
    ~BlowfishCipher() override;

    Direction getDirection() const noexcept { return m_direction; }
    Blowfish::Mode getMode() const noexcept { return m_mode; }
    Blowfish::Padding getPadding() const noexcept { return m_padding; }

    // The number of bytes update(length bytes) would give out now.
    int32_t getUpdateSize(int32_t length) const noexcept;
    // At most this many bytes come out of update(length bytes) and the
    // finish() after it together.
    int32_t getOutputSize(int32_t length) const noexcept;

    // Processes length bytes into output and returns the count given out.
    // When capacity is below getUpdateSize(length) it throws
    // ResultException(0x80004009) and consumes nothing; a negative length or
    // null pointer throws ResultException(0x80070057). input and output must
    // not overlap.
    int32_t update(const uint8_t* input, int32_t length, uint8_t* output, int32_t capacity);
    // Ends the message: the last (padded) block, the held-back block without
    // its padding, or nothing; at most 8 bytes, so for ECB and CBC capacity
    // must be at least 8 (ResultException(0x80004009) otherwise). Throws
    // IllegalBlockSizeException for ECB or CBC input that did not end on a
    // block boundary (without padding) or that was not a positive number of
    // blocks (decrypting with padding), and BadPaddingException for bad
    // padding.
    int32_t finish(uint8_t* output, int32_t capacity);
    // Drops any message in progress and starts again with the IV.
    void restart() noexcept;

private:
    BlowfishCipher(const BlowfishCipher&) = delete;
    BlowfishCipher& operator=(const BlowfishCipher&) = delete;

    int32_t processBlocks(const uint8_t* input, int32_t blocks, uint8_t* output) noexcept;
    void processStream(const uint8_t* input, int32_t length, uint8_t* output) noexcept;
    bool holdsBackLastBlock() const noexcept;

    Blowfish m_key;
    Direction m_direction;
    Blowfish::Mode m_mode;
    Blowfish::Padding m_padding;
    uint8_t m_iv[8];       // as given
    uint8_t m_register[8]; // the chaining value (CBC) or the feedback block (CFB, OFB)
    uint8_t m_held[8];     // input waiting for a whole block (ECB, CBC)
    int32_t m_heldCount;
    int32_t m_position; // next byte of m_register to use (CFB, OFB); 0 means a new block
};

} // namespace crypto
} // namespace qv

#endif
