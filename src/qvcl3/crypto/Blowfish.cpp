#include <qv/crypto/Blowfish.h>

#include <qv/core/Exception.h>
#include <qv/crypto/BlowfishCipher.h>
#include <qv/crypto/CryptoException.h>
#include <qv/lang/String.h>

#include "crypto/Arguments.h"
#include "crypto/BlowfishRounds.h"
#include "crypto/CryptoTables.h"
#include "crypto/DigestEngines.h"

#include <cstring>
#include <limits>

namespace qv {
namespace crypto {

namespace {

std::vector<uint8_t> runWhole(BlowfishCipher& cipher, const uint8_t* data, int64_t length)
{
    // Room for the output and the padding block, reserved before any work so
    // that running out of memory happens before the cipher has changed.
    std::vector<uint8_t> output(static_cast<size_t>(length) + Blowfish::BLOCK_SIZE);
    size_t written = 0;
    constexpr int64_t kChunk = int64_t(1) << 30;
    while (length > 0) {
        const int32_t piece = static_cast<int32_t>(length < kChunk ? length : kChunk);
        written +=
            static_cast<size_t>(cipher.update(data, piece, output.data() + written, piece + Blowfish::BLOCK_SIZE));
        data += piece;
        length -= piece;
    }
    written += static_cast<size_t>(cipher.finish(output.data() + written, Blowfish::BLOCK_SIZE));
    output.resize(written);
    return output;
}

} // namespace

Blowfish::Blowfish() noexcept : m_p{}, m_s{}, m_keyed(false) {}

Blowfish::Blowfish(const void* key, int32_t length) : Blowfish()
{
    setKey(key, length);
}

Blowfish::Blowfish(const Blowfish& other) noexcept : Object()
{
    *this = other;
}

Blowfish& Blowfish::operator=(const Blowfish& other) noexcept
{
    if (this != &other) {
        std::memcpy(m_p, other.m_p, sizeof m_p);
        std::memcpy(m_s, other.m_s, sizeof m_s);
        m_keyed = other.m_keyed;
    }
    return *this;
}

Blowfish::~Blowfish()
{
    detail::secureWipe(m_p, sizeof m_p);
    detail::secureWipe(m_s, sizeof m_s);
}

Blowfish* Blowfish::clone() const
{
    return new Blowfish(*this);
}

void Blowfish::setKey(const void* key, int32_t length)
{
    if (key == nullptr || length < MIN_KEY_LENGTH || length > MAX_KEY_LENGTH) {
        String message(u"Blowfish keys are 4 to 56 bytes long, not ");
        message.append(key == nullptr ? String(u"a null pointer") : String::valueOf(length));
        throw InvalidKeyException(message);
    }
    const uint8_t* bytes = static_cast<const uint8_t*>(key);
    std::memcpy(m_s, detail::kBlowfishS, sizeof m_s);
    int32_t next = 0;
    for (int i = 0; i < 18; ++i) {
        uint32_t word = 0;
        for (int j = 0; j < 4; ++j) {
            word = (word << 8) | bytes[next];
            next = next + 1 == length ? 0 : next + 1;
        }
        m_p[i] = detail::kBlowfishP[i] ^ word;
    }
    const detail::BlowfishSchedule schedule{m_p, m_s};
    uint32_t left = 0;
    uint32_t right = 0;
    for (int i = 0; i < 18; i += 2) {
        detail::blowfishEncrypt(schedule, left, right);
        m_p[i] = left;
        m_p[i + 1] = right;
    }
    for (int box = 0; box < 4; ++box) {
        for (int i = 0; i < 256; i += 2) {
            detail::blowfishEncrypt(schedule, left, right);
            m_s[box][i] = left;
            m_s[box][i + 1] = right;
        }
    }
    left = right = 0;
    detail::secureWipe(&left, sizeof left);
    detail::secureWipe(&right, sizeof right);
    m_keyed = true;
}

bool Blowfish::hasKey() const noexcept
{
    return m_keyed;
}

void Blowfish::requireKey() const
{
    if (!m_keyed) {
        throw InvalidKeyException(String(u"Blowfish: no key has been set"));
    }
}

void Blowfish::encryptBlock(const uint8_t* in, uint8_t* out) const
{
    requireKey();
    uint32_t left = detail::loadBigEndian(in);
    uint32_t right = detail::loadBigEndian(in + 4);
    detail::blowfishEncrypt({m_p, m_s}, left, right);
    detail::storeBigEndian(out, left);
    detail::storeBigEndian(out + 4, right);
}

void Blowfish::decryptBlock(const uint8_t* in, uint8_t* out) const
{
    requireKey();
    uint32_t left = detail::loadBigEndian(in);
    uint32_t right = detail::loadBigEndian(in + 4);
    detail::blowfishDecrypt({m_p, m_s}, left, right);
    detail::storeBigEndian(out, left);
    detail::storeBigEndian(out + 4, right);
}

std::vector<uint8_t> Blowfish::encrypt(const void* data, int64_t length, Mode mode, Padding padding,
                                       const uint8_t* iv) const
{
    detail::requireBytes(data, length, u"Blowfish: no data at a null pointer, no negative length");
    BlowfishCipher cipher(*this, BlowfishCipher::ENCRYPT, mode, padding, iv);
    return runWhole(cipher, static_cast<const uint8_t*>(data), length);
}

std::vector<uint8_t> Blowfish::decrypt(const void* data, int64_t length, Mode mode, Padding padding,
                                       const uint8_t* iv) const
{
    detail::requireBytes(data, length, u"Blowfish: no data at a null pointer, no negative length");
    BlowfishCipher cipher(*this, BlowfishCipher::DECRYPT, mode, padding, iv);
    return runWhole(cipher, static_cast<const uint8_t*>(data), length);
}

} // namespace crypto
} // namespace qv
