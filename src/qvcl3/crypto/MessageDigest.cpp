#include <qv/crypto/MessageDigest.h>

#include <qv/core/Exception.h>
#include <qv/crypto/CryptoException.h>
#include <qv/lang/String.h>

#include "crypto/Arguments.h"
#include "crypto/CryptoTables.h"
#include "crypto/DigestEngines.h"

#include <qvcore3/qvcore3.h>

#include <cstring>
#include <string>

namespace qv {
namespace crypto {
namespace detail {

struct DigestAlgorithm {
    const char16_t* name;
    int32_t length;
    bool bigEndian; // of the words of the state and of the length field
    const uint32_t* initial;
    CompressFunction portable;
    // Null, or the code for the SHA extensions (QV_CPU_SHA).
    const CompressFunction* extensions;
};

} // namespace detail

namespace {

using detail::DigestAlgorithm;

constexpr uint32_t kMd5Initial[4] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
constexpr uint32_t kSha1Initial[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};

const DigestAlgorithm kMd5 = {u"MD5", 16, false, kMd5Initial, &detail::md5Compress, nullptr};
const DigestAlgorithm kSha1 = {
    u"SHA-1", 20, true, kSha1Initial, &detail::sha1CompressPortable, &detail::sha1CompressExtensions};
const DigestAlgorithm kSha256 = {
    u"SHA-256", 32, true, detail::kSha256Initial, &detail::sha256CompressPortable, &detail::sha256CompressExtensions};

struct AlgorithmName {
    const char16_t* name;
    const DigestAlgorithm* algorithm;
};

const AlgorithmName kNames[] = {
    {u"MD5", &kMd5},  {u"SHA-1", &kSha1},     {u"SHA1", &kSha1},
    {u"SHA", &kSha1}, {u"SHA-256", &kSha256}, {u"SHA256", &kSha256},
};

const DigestAlgorithm& findAlgorithm(const String& name)
{
    for (const AlgorithmName& entry : kNames) {
        if (name.equals(entry.name, true)) {
            return *entry.algorithm;
        }
    }
    String message(u"unknown message digest algorithm \"");
    message.append(name).append(u"\"");
    throw NoSuchAlgorithmException(message);
}

// The fastest code this processor runs, asked for every new digest so that
// QVCL3_PORTABLE_CODE takes effect for digests made after it is set.
detail::CompressFunction compressionFor(const DigestAlgorithm& algorithm) noexcept
{
    if (algorithm.extensions != nullptr && *algorithm.extensions != nullptr && (QVCpuFeatures() & QV_CPU_SHA) != 0) {
        return *algorithm.extensions;
    }
    return algorithm.portable;
}

constexpr int kBlockSize = 64;
constexpr int kLengthField = 8;

} // namespace

Reference<MessageDigest> MessageDigest::getInstance(const String& algorithm)
{
    return Reference<MessageDigest>(new MessageDigest(algorithm));
}

MessageDigest::MessageDigest(const String& algorithm)
    : m_algorithm(&findAlgorithm(algorithm)), m_compress(compressionFor(*m_algorithm))
{
    reset();
}

MessageDigest::MessageDigest(const MessageDigest& other) noexcept : Object()
{
    *this = other;
}

MessageDigest& MessageDigest::operator=(const MessageDigest& other) noexcept
{
    if (this != &other) {
        m_algorithm = other.m_algorithm;
        m_compress = other.m_compress;
        std::memcpy(m_state, other.m_state, sizeof m_state);
        std::memcpy(m_block, other.m_block, sizeof m_block);
        m_length = other.m_length;
        m_held = other.m_held;
    }
    return *this;
}

MessageDigest::~MessageDigest()
{
    wipe();
}

MessageDigest* MessageDigest::clone() const
{
    return new MessageDigest(*this);
}

String MessageDigest::toString()
{
    String text(m_algorithm->name);
    text.append(u" message digest (").append(String::valueOf(getDigestLength())).append(u" bytes)");
    return text;
}

void MessageDigest::update(const void* bytes, int64_t count)
{
    detail::requireBytes(bytes, count, u"MessageDigest::update: no bytes at a null pointer, no negative count");
    if (count == 0) {
        return;
    }
    const uint8_t* data = static_cast<const uint8_t*>(bytes);
    size_t left = static_cast<size_t>(count);
    m_length += left;
    if (m_held > 0) {
        const size_t take = left < size_t(kBlockSize - m_held) ? left : size_t(kBlockSize - m_held);
        std::memcpy(m_block + m_held, data, take);
        m_held += static_cast<int32_t>(take);
        data += take;
        left -= take;
        if (m_held < kBlockSize) {
            return;
        }
        m_compress(m_state, m_block, 1);
        m_held = 0;
    }
    if (left >= size_t(kBlockSize)) {
        const size_t blocks = left / kBlockSize;
        m_compress(m_state, data, blocks);
        data += blocks * kBlockSize;
        left -= blocks * kBlockSize;
    }
    if (left > 0) {
        std::memcpy(m_block, data, left);
        m_held = static_cast<int32_t>(left);
    }
}

void MessageDigest::update(uint8_t byte)
{
    update(&byte, 1);
}

void MessageDigest::update(const String& text)
{
    const std::string utf8 = text.toUtf8();
    update(utf8.data(), static_cast<int64_t>(utf8.size()));
}

std::vector<uint8_t> MessageDigest::digest()
{
    // Allocated first, so that running out of memory leaves the hash running.
    std::vector<uint8_t> result(static_cast<size_t>(getDigestLength()));
    finish(result.data());
    return result;
}

std::vector<uint8_t> MessageDigest::digest(const void* bytes, int64_t count)
{
    std::vector<uint8_t> result(static_cast<size_t>(getDigestLength()));
    update(bytes, count);
    finish(result.data());
    return result;
}

int32_t MessageDigest::digestTo(uint8_t* destination, int32_t capacity)
{
    const int32_t length = getDigestLength();
    if (destination == nullptr || capacity < length) {
        throw ResultException(results::BUFFER_TOO_SMALL,
                              String(u"MessageDigest::digestTo: the destination is smaller than the digest"));
    }
    finish(destination);
    return length;
}

String MessageDigest::digestHex()
{
    static const char16_t kDigits[] = u"0123456789abcdef";
    MessageDigest finished(*this);
    uint8_t bytes[32];
    finished.finish(bytes);
    char16_t text[64];
    const int32_t length = getDigestLength();
    for (int32_t i = 0; i < length; ++i) {
        text[2 * i] = kDigits[bytes[i] >> 4];
        text[2 * i + 1] = kDigits[bytes[i] & 15];
    }
    detail::secureWipe(bytes, sizeof bytes);
    String hex(text, 2 * length);
    reset();
    return hex;
}

void MessageDigest::finish(uint8_t* destination) noexcept
{
    const uint64_t bits = m_length << 3;
    const bool bigEndian = m_algorithm->bigEndian;
    m_block[m_held++] = 0x80;
    if (m_held > kBlockSize - kLengthField) {
        std::memset(m_block + m_held, 0, size_t(kBlockSize - m_held));
        m_compress(m_state, m_block, 1);
        m_held = 0;
    }
    std::memset(m_block + m_held, 0, size_t(kBlockSize - kLengthField - m_held));
    for (int i = 0; i < kLengthField; ++i) {
        const int shift = 8 * (bigEndian ? kLengthField - 1 - i : i);
        m_block[kBlockSize - kLengthField + i] = uint8_t(bits >> shift);
    }
    m_compress(m_state, m_block, 1);
    const int32_t words = getDigestLength() / 4;
    for (int32_t i = 0; i < words; ++i) {
        if (bigEndian) {
            detail::storeBigEndian(destination + 4 * i, m_state[i]);
        } else {
            detail::storeLittleEndian(destination + 4 * i, m_state[i]);
        }
    }
    reset();
}

void MessageDigest::wipe() noexcept
{
    detail::secureWipe(m_state, sizeof m_state);
    detail::secureWipe(m_block, sizeof m_block);
    m_length = 0;
    m_held = 0;
}

void MessageDigest::reset() noexcept
{
    wipe();
    std::memcpy(m_state, m_algorithm->initial, sizeof(uint32_t) * size_t(getDigestLength() / 4));
}

int32_t MessageDigest::getDigestLength() const noexcept
{
    return m_algorithm->length;
}

String MessageDigest::getAlgorithm() const
{
    return String(m_algorithm->name);
}

} // namespace crypto
} // namespace qv
