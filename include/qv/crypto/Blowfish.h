#ifndef QV_CRYPTO_BLOWFISH_H
#define QV_CRYPTO_BLOWFISH_H

#include <qv/core/Export.h>
#include <qv/core/Object.h>

#include <cstdint>
#include <vector>

namespace qv {
namespace crypto {

// The Blowfish block cipher (Schneier, 1993): 64-bit blocks, keys of 4 to
// 56 bytes, with the modes ECB, CBC, CFB-64 and OFB-64 and PKCS #5 padding
// (which is PKCS #7 for 8-byte blocks).
//
// Blowfish is obsolete: its 64-bit block wears out after a few gigabytes
// under one key (birthday collisions, as in the Sweet32 attacks), and its
// S-box lookups are indexed by secret data, so the time an encryption takes
// can leak key and data bits through the processor caches. It is here to
// read and write data that exists in this format; new designs use an
// authenticated cipher such as AES-GCM or ChaCha20-Poly1305.
//
// A Blowfish object is a key schedule: once keyed, its const operations may
// be used from several threads at once. The schedule is wiped when the
// object is destroyed or re-keyed. Messages in progress are BlowfishCipher's.
class QV_EXPORT Blowfish : public Object {
public:
    enum Mode { ECB, CBC, CFB64, OFB64 };
    // PKCS5_PADDING applies to ECB and CBC only.
    enum Padding { NO_PADDING, PKCS5_PADDING };

    static constexpr int32_t BLOCK_SIZE = 8;
    static constexpr int32_t MIN_KEY_LENGTH = 4;
    static constexpr int32_t MAX_KEY_LENGTH = 56;

    // Without a key: every operation but setKey throws InvalidKeyException.
    Blowfish() noexcept;
    // setKey(key, length).
    Blowfish(const void* key, int32_t length);
    Blowfish(const Blowfish& other) noexcept;
    Blowfish& operator=(const Blowfish& other) noexcept;
    ~Blowfish() override;

    Blowfish* clone() const override;

    // A key of MIN_KEY_LENGTH to MAX_KEY_LENGTH bytes; any other length (or a
    // null key) throws InvalidKeyException and leaves the object as it was.
    void setKey(const void* key, int32_t length);
    bool hasKey() const noexcept;

    // One 8-byte block; in and out may be the same memory.
    void encryptBlock(const uint8_t* in, uint8_t* out) const;
    void decryptBlock(const uint8_t* in, uint8_t* out) const;

    // A whole message. iv: 8 bytes for CBC, CFB64 and OFB64, ignored for
    // ECB. Without padding, ECB and CBC take only whole blocks
    // (IllegalBlockSizeException); with it, decryption of anything but a
    // well-formed padded message throws BadPaddingException (a wrong key
    // does so with a probability of about 255/256: padding is no integrity
    // check). Negative lengths and null pointers throw
    // ResultException(0x80070057).
    std::vector<uint8_t> encrypt(const void* data, int64_t length, Mode mode, Padding padding,
                                 const uint8_t* iv = nullptr) const;
    std::vector<uint8_t> decrypt(const void* data, int64_t length, Mode mode, Padding padding,
                                 const uint8_t* iv = nullptr) const;

private:
    friend class BlowfishCipher;

    void requireKey() const;

    uint32_t m_p[18];
    uint32_t m_s[4][256];
    bool m_keyed;
};

} // namespace crypto
} // namespace qv

#endif
