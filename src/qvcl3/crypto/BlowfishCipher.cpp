#include <qv/crypto/BlowfishCipher.h>

#include <qv/core/Exception.h>
#include <qv/crypto/CryptoException.h>
#include <qv/lang/String.h>

#include "crypto/Arguments.h"
#include "crypto/BlowfishRounds.h"
#include "crypto/DigestEngines.h"

#include <cstring>

namespace qv {
namespace crypto {

using detail::loadBigEndian;
using detail::storeBigEndian;

namespace {

constexpr int32_t kBlock = Blowfish::BLOCK_SIZE;

[[noreturn]] void invalidArgument(const char16_t* message)
{
    throw ResultException(results::INVALIDARG, String(message));
}

const Blowfish& keyed(const Blowfish& key)
{
    if (!key.hasKey()) {
        throw InvalidKeyException(String(u"Blowfish: no key has been set"));
    }
    return key;
}

} // namespace

BlowfishCipher::BlowfishCipher(const Blowfish& key, Direction direction, Blowfish::Mode mode, Blowfish::Padding padding,
                               const uint8_t* iv)
    : m_key(keyed(key)), m_direction(direction), m_mode(mode), m_padding(padding), m_iv{}, m_register{}, m_held{},
      m_heldCount(0), m_position(0)
{
    if (direction != ENCRYPT && direction != DECRYPT) {
        invalidArgument(u"BlowfishCipher: unknown direction");
    }
    if (mode != Blowfish::ECB && mode != Blowfish::CBC && mode != Blowfish::CFB64 && mode != Blowfish::OFB64) {
        invalidArgument(u"BlowfishCipher: unknown mode");
    }
    if (padding != Blowfish::NO_PADDING && padding != Blowfish::PKCS5_PADDING) {
        invalidArgument(u"BlowfishCipher: unknown padding");
    }
    if (padding == Blowfish::PKCS5_PADDING && mode != Blowfish::ECB && mode != Blowfish::CBC) {
        invalidArgument(u"BlowfishCipher: padding applies to ECB and CBC only");
    }
    if (mode != Blowfish::ECB) {
        if (iv == nullptr) {
            invalidArgument(u"BlowfishCipher: CBC, CFB64 and OFB64 need an 8-byte IV");
        }
        std::memcpy(m_iv, iv, sizeof m_iv);
    }
    restart();
}

BlowfishCipher::~BlowfishCipher()
{
    detail::secureWipe(m_iv, sizeof m_iv);
    detail::secureWipe(m_register, sizeof m_register);
    detail::secureWipe(m_held, sizeof m_held);
}

bool BlowfishCipher::holdsBackLastBlock() const noexcept
{
    return m_direction == DECRYPT && m_padding == Blowfish::PKCS5_PADDING;
}

int32_t BlowfishCipher::getUpdateSize(int32_t length) const noexcept
{
    if (length < 0) {
        return 0;
    }
    if (m_mode == Blowfish::CFB64 || m_mode == Blowfish::OFB64) {
        return length;
    }
    const int64_t total = int64_t(m_heldCount) + length;
    int64_t blocks = total / kBlock;
    if (holdsBackLastBlock() && blocks > 0 && total % kBlock == 0) {
        --blocks;
    }
    return static_cast<int32_t>(blocks * kBlock);
}

int32_t BlowfishCipher::getOutputSize(int32_t length) const noexcept
{
    if (length < 0) {
        return 0;
    }
    if (m_mode == Blowfish::CFB64 || m_mode == Blowfish::OFB64) {
        return length;
    }
    const int64_t total = int64_t(m_heldCount) + length + kBlock;
    return total > INT32_MAX ? INT32_MAX : static_cast<int32_t>(total);
}

int32_t BlowfishCipher::update(const uint8_t* input, int32_t length, uint8_t* output, int32_t capacity)
{
    const char16_t* const mistake = u"BlowfishCipher::update: no data at a null pointer, no negative length";
    detail::requireBytes(input, length, mistake);
    detail::requireBytes(output, length, mistake);
    const int32_t size = getUpdateSize(length);
    if (capacity < size) {
        throw ResultException(results::BUFFER_TOO_SMALL, String(u"BlowfishCipher::update: the output does not fit"));
    }
    if (m_mode == Blowfish::CFB64 || m_mode == Blowfish::OFB64) {
        processStream(input, length, output);
        return length;
    }
    int32_t blocks = size / kBlock;
    if (blocks > 0 && m_heldCount > 0) {
        const int32_t take = kBlock - m_heldCount;
        std::memcpy(m_held + m_heldCount, input, size_t(take));
        input += take;
        length -= take;
        processBlocks(m_held, 1, output);
        output += kBlock;
        --blocks;
        m_heldCount = 0;
    }
    if (blocks > 0) {
        processBlocks(input, blocks, output);
        input += blocks * kBlock;
        length -= blocks * kBlock;
    }
    if (length > 0) {
        std::memcpy(m_held + m_heldCount, input, size_t(length));
        m_heldCount += length;
    }
    return size;
}

int32_t BlowfishCipher::finish(uint8_t* output, int32_t capacity)
{
    if (m_mode == Blowfish::CFB64 || m_mode == Blowfish::OFB64) {
        restart();
        return 0;
    }
    if (output == nullptr || capacity < kBlock) {
        throw ResultException(results::BUFFER_TOO_SMALL,
                              String(u"BlowfishCipher::finish: the output needs room for 8 bytes"));
    }
    if (m_padding == Blowfish::NO_PADDING) {
        const bool whole = m_heldCount == 0;
        restart();
        if (!whole) {
            throw IllegalBlockSizeException(String(u"Blowfish: without padding, ECB and CBC take whole 8-byte blocks"));
        }
        return 0;
    }
    if (m_direction == ENCRYPT) {
        const uint8_t pad = uint8_t(kBlock - m_heldCount);
        std::memset(m_held + m_heldCount, pad, pad);
        processBlocks(m_held, 1, output);
        restart();
        return kBlock;
    }
    if (m_heldCount != kBlock) {
        restart();
        throw IllegalBlockSizeException(
            String(u"Blowfish: padded ciphertext must be a positive multiple of 8 bytes long"));
    }
    uint8_t block[kBlock];
    processBlocks(m_held, 1, block);
    restart();
    // Checked without branches on the data, so that the time taken does not
    // tell which byte was wrong.
    const uint32_t n = block[kBlock - 1];
    uint32_t bad = ((n - 1) >> 31) | ((uint32_t(kBlock) - n) >> 31);
    for (int32_t i = 0; i < kBlock; ++i) {
        const uint32_t inPadding = 0u - ((uint32_t(i) + n + 0xF8u) >> 8); // all ones when i >= 8 - n
        bad |= (block[i] ^ n) & inPadding;
    }
    if (bad != 0) {
        detail::secureWipe(block, sizeof block);
        throw BadPaddingException(String(u"Blowfish: bad padding (wrong key, wrong IV or damaged data)"));
    }
    const int32_t length = kBlock - int32_t(n);
    std::memcpy(output, block, size_t(length));
    detail::secureWipe(block, sizeof block);
    return length;
}

void BlowfishCipher::restart() noexcept
{
    std::memcpy(m_register, m_iv, sizeof m_register);
    detail::secureWipe(m_held, sizeof m_held);
    m_heldCount = 0;
    m_position = 0;
}

int32_t BlowfishCipher::processBlocks(const uint8_t* input, int32_t blocks, uint8_t* output) noexcept
{
    const detail::BlowfishSchedule schedule{m_key.m_p, m_key.m_s};
    const bool encrypting = m_direction == ENCRYPT;
    if (m_mode == Blowfish::ECB) {
        for (int32_t i = 0; i < blocks; ++i, input += kBlock, output += kBlock) {
            uint32_t left = loadBigEndian(input);
            uint32_t right = loadBigEndian(input + 4);
            if (encrypting) {
                detail::blowfishEncrypt(schedule, left, right);
            } else {
                detail::blowfishDecrypt(schedule, left, right);
            }
            storeBigEndian(output, left);
            storeBigEndian(output + 4, right);
        }
        return blocks;
    }
    uint32_t chainLeft = loadBigEndian(m_register);
    uint32_t chainRight = loadBigEndian(m_register + 4);
    if (encrypting) {
        for (int32_t i = 0; i < blocks; ++i, input += kBlock, output += kBlock) {
            chainLeft ^= loadBigEndian(input);
            chainRight ^= loadBigEndian(input + 4);
            detail::blowfishEncrypt(schedule, chainLeft, chainRight);
            storeBigEndian(output, chainLeft);
            storeBigEndian(output + 4, chainRight);
        }
    } else {
        for (int32_t i = 0; i < blocks; ++i, input += kBlock, output += kBlock) {
            const uint32_t cipherLeft = loadBigEndian(input);
            const uint32_t cipherRight = loadBigEndian(input + 4);
            uint32_t left = cipherLeft;
            uint32_t right = cipherRight;
            detail::blowfishDecrypt(schedule, left, right);
            storeBigEndian(output, left ^ chainLeft);
            storeBigEndian(output + 4, right ^ chainRight);
            chainLeft = cipherLeft;
            chainRight = cipherRight;
        }
    }
    storeBigEndian(m_register, chainLeft);
    storeBigEndian(m_register + 4, chainRight);
    return blocks;
}

void BlowfishCipher::processStream(const uint8_t* input, int32_t length, uint8_t* output) noexcept
{
    const detail::BlowfishSchedule schedule{m_key.m_p, m_key.m_s};
    const bool cfb = m_mode == Blowfish::CFB64;
    const bool encrypting = m_direction == ENCRYPT;
    for (int32_t i = 0; i < length; ++i) {
        if (m_position == 0) {
            uint32_t left = loadBigEndian(m_register);
            uint32_t right = loadBigEndian(m_register + 4);
            detail::blowfishEncrypt(schedule, left, right);
            storeBigEndian(m_register, left);
            storeBigEndian(m_register + 4, right);
        }
        const uint8_t in = input[i];
        const uint8_t out = uint8_t(in ^ m_register[m_position]);
        output[i] = out;
        if (cfb) {
            // The feedback is always the ciphertext byte.
            m_register[m_position] = encrypting ? out : in;
        }
        m_position = (m_position + 1) & (kBlock - 1);
    }
}

} // namespace crypto
} // namespace qv
