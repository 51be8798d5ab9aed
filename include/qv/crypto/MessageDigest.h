#ifndef QV_CRYPTO_MESSAGEDIGEST_H
#define QV_CRYPTO_MESSAGEDIGEST_H

#include <qv/core/Export.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>

#include <cstdint>
#include <vector>

namespace qv {

class String;

namespace crypto {

namespace detail {
struct DigestAlgorithm;
}

// A running message digest: MD5 (RFC 1321), SHA-1 or SHA-256 (FIPS 180-4).
//
// MD5 and SHA-1 are broken: collisions can be made at will, so neither may
// vouch for data that an adversary could have chosen (signatures,
// certificates, integrity of downloads, new password stores). They are here
// to read and check what existing files and protocols already hold. New
// designs use SHA-256.
//
// The implementations are the library's own, bit-exact for every length
// (the length counter is 64 bits), and have no branches or table lookups
// that depend on the data. SHA-1 and SHA-256 use the processor's SHA extensions when
// it has them (see docs/crypto.md).
//
// One object is used by one thread at a time. The intermediate state is
// wiped on reset, after each digest and on destruction.
class QV_EXPORT MessageDigest : public Object {
public:
    // "MD5", "SHA-1" or "SHA-256", in any case; "SHA" and "SHA1" are taken
    // for SHA-1 and "SHA256" for SHA-256. Anything else throws
    // NoSuchAlgorithmException naming the algorithm asked for.
    static Reference<MessageDigest> getInstance(const String& algorithm);

    explicit MessageDigest(const String& algorithm);
    // Copies the running state: the copy goes on from where the original is.
    MessageDigest(const MessageDigest& other) noexcept;
    MessageDigest& operator=(const MessageDigest& other) noexcept;
    ~MessageDigest() override;

    // A fork of the running hash, with a reference count of its own (0).
    MessageDigest* clone() const override;
    using Object::toString;
    // The algorithm and the digest length: "SHA-256 message digest (32 bytes)".
    String toString() override;

    // Adds count bytes. A negative count, or a null pointer with a positive
    // count, throws ResultException(0x80070057) and adds nothing.
    void update(const void* bytes, int64_t count);
    void update(uint8_t byte);
    // Adds the text as UTF-8, without a terminator; unpaired surrogates are
    // taken as U+FFFD.
    void update(const String& text);

    // Finishes: the digest of everything added since the last reset, after
    // which the object is reset.
    std::vector<uint8_t> digest();
    // update(bytes, count), then digest().
    std::vector<uint8_t> digest(const void* bytes, int64_t count);
    // Finishes into the caller's memory and returns the digest length. When
    // capacity is smaller than that, throws ResultException(0x80004009) and
    // leaves the running hash as it was.
    int32_t digestTo(uint8_t* destination, int32_t capacity);
    // Finishes and gives the digest in lower-case hexadecimal, as the
    // md5sum and sha256sum tools print it.
    String digestHex();

    void reset() noexcept;
    // 16, 20 or 32.
    int32_t getDigestLength() const noexcept;
    // The canonical name: "MD5", "SHA-1" or "SHA-256".
    String getAlgorithm() const;

private:
    void finish(uint8_t* destination) noexcept;
    void wipe() noexcept;

    const detail::DigestAlgorithm* m_algorithm;
    void (*m_compress)(uint32_t* state, const uint8_t* blocks, size_t count) noexcept;
    uint32_t m_state[8];
    uint8_t m_block[64];
    uint64_t m_length; // bytes added, modulo 2^64
    int32_t m_held;    // bytes waiting in m_block
};

} // namespace crypto
} // namespace qv

#endif
