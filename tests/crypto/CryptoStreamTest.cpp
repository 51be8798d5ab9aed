#include "../io/StreamTestSupport.h"
#include "AllocationSweep.h"
#include "CryptoTestSupport.h"

#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include <random>
#include <vector>

using iotest::messageOf;
using iotest::RecordingOutput;
using iotest::ScriptedInput;
using qv::Reference;
using qv::crypto::BadPaddingException;
using qv::crypto::Blowfish;
using qv::crypto::BlowfishCipher;
using qv::crypto::CipherInputStream;
using qv::crypto::CipherOutputStream;
using qv::crypto::DigestInputStream;
using qv::crypto::DigestOutputStream;
using qv::crypto::IllegalBlockSizeException;
using qv::crypto::MessageDigest;

namespace {

std::vector<signed char> sample(size_t size)
{
    std::mt19937 random(12);
    const std::vector<uint8_t> bytes = qvtest::randomBytes(random, size);
    return std::vector<signed char>(bytes.begin(), bytes.end());
}

std::vector<uint8_t> unsignedBytes(const std::vector<signed char>& data)
{
    return std::vector<uint8_t>(data.begin(), data.end());
}

// Reads everything with block reads of varied sizes, mixed with single-byte
// reads (which take a 0 from a stuttering source for the end, so only over
// sources that do not stutter) and skips (whose bytes must still pass
// through the filter; they are left out of the result).
std::vector<signed char> drain(qv::io::InputStream& in, bool singleBytes, bool skips = false)
{
    std::vector<signed char> out;
    signed char buffer[19];
    for (int turn = 0;; ++turn) {
        if (singleBytes && turn % 3 == 0) {
            const int byte = in.read();
            if (byte < 0) {
                break;
            }
            out.push_back(static_cast<signed char>(byte));
        } else if (skips && turn % 7 == 1) {
            if (in.skip(5) == 0 && in.read(buffer, 1) < 0) {
                break;
            }
        } else {
            const int32_t n = in.read(buffer, 1 + turn % 19);
            if (n < 0) {
                break;
            }
            out.insert(out.end(), buffer, buffer + n);
        }
    }
    return out;
}

const uint8_t kKey[] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xF0, 0xE1, 0xD2, 0xC3, 0xB4, 0xA5, 0x96, 0x87};
const uint8_t kIv[] = {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};

} // namespace

TEST(CryptoStreamTest, DigestStreamsHashWhatPasses)
{
    const std::vector<signed char> data = sample(5000);
    const std::vector<uint8_t> expected = MessageDigest(u"SHA-256").digest(data.data(), int64_t(data.size()));

    Reference<MessageDigest> md = MessageDigest::getInstance(u"SHA-256");
    DigestInputStream in(new ScriptedInput(data, 13, true), md.get());
    drain(in, false, true);
    EXPECT_EQ(md->digest(), expected);
    DigestInputStream bytewise(new ScriptedInput(data, 13), md.get());
    drain(bytewise, true);
    EXPECT_EQ(md->digest(), expected);
    EXPECT_FALSE(in.markSupported());
    EXPECT_EQ(messageOf<qv::io::IoException>([&] { in.reset(); }), "mark/reset not supported");

    Reference<RecordingOutput> sink(new RecordingOutput);
    DigestOutputStream out(sink.get(), md.get());
    out.write(data.data(), 100);
    out.on(false);
    out.write(data.data(), 10);
    out.on(true);
    for (size_t i = 100; i < data.size(); ++i) {
        out.write(data[i]);
    }
    EXPECT_EQ(sink->data.size(), data.size() + 10);
    EXPECT_EQ(md->digest(), expected);
    EXPECT_THROW(DigestOutputStream(sink.get(), nullptr), qv::ResultException);
}

TEST(CryptoStreamTest, CipherStreamsRoundTripInEveryMode)
{
    const Blowfish key(kKey, 16);
    for (Blowfish::Mode mode : {Blowfish::ECB, Blowfish::CBC, Blowfish::CFB64, Blowfish::OFB64}) {
        const Blowfish::Padding padding =
            mode == Blowfish::ECB || mode == Blowfish::CBC ? Blowfish::PKCS5_PADDING : Blowfish::NO_PADDING;
        for (size_t size : {size_t(0), size_t(7), size_t(8), size_t(4097), size_t(9000)}) {
            const std::vector<signed char> plain = sample(size);
            const std::vector<uint8_t> expected = key.encrypt(plain.data(), int64_t(size), mode, padding, kIv);

            Reference<RecordingOutput> sink(new RecordingOutput);
            CipherOutputStream out(sink.get(), key, BlowfishCipher::ENCRYPT, mode, padding, kIv);
            for (size_t at = 0; at < size; at += 333) {
                out.write(plain.data() + at, int32_t(std::min<size_t>(333, size - at)));
            }
            out.close();
            out.close();
            EXPECT_EQ(sink->closes, 1);
            EXPECT_EQ(unsignedBytes(sink->data), expected) << "mode " << mode << " size " << size;
            EXPECT_EQ(messageOf<qv::io::IoException>([&] { out.write(plain.data(), 1); }), "stream closed");

            for (bool stutter : {false, true}) {
                CipherInputStream in(new ScriptedInput(sink->data, 11, stutter), key, BlowfishCipher::DECRYPT, mode,
                                     padding, kIv);
                EXPECT_EQ(drain(in, !stutter), plain) << "mode " << mode << " size " << size;
                EXPECT_EQ(in.read(), -1);
            }
        }
    }
}

TEST(CryptoStreamTest, BadCiphertextFailsAtTheEndOfTheStream)
{
    const Blowfish key(kKey, 16);
    const Blowfish wrongKey(kKey, 15);
    const std::vector<signed char> plain = sample(100);
    const std::vector<uint8_t> sealed =
        key.encrypt(plain.data(), int64_t(plain.size()), Blowfish::CBC, Blowfish::PKCS5_PADDING, kIv);
    const std::vector<signed char> sealedBytes(sealed.begin(), sealed.end());

    CipherInputStream wrong(new ScriptedInput(sealedBytes), wrongKey, BlowfishCipher::DECRYPT, Blowfish::CBC,
                            Blowfish::PKCS5_PADDING, kIv);
    EXPECT_THROW(drain(wrong, true), BadPaddingException);

    const std::vector<signed char> truncated(sealedBytes.begin(), sealedBytes.end() - 3);
    CipherInputStream shortened(new ScriptedInput(truncated), key, BlowfishCipher::DECRYPT, Blowfish::CBC,
                                Blowfish::PKCS5_PADDING, kIv);
    EXPECT_THROW(drain(shortened, true), IllegalBlockSizeException);

    // Finishing fails, yet the wrapped stream is closed.
    Reference<RecordingOutput> sink(new RecordingOutput);
    CipherOutputStream out(sink.get(), wrongKey, BlowfishCipher::DECRYPT, Blowfish::CBC, Blowfish::PKCS5_PADDING, kIv);
    out.write(sealedBytes.data(), int32_t(sealedBytes.size()));
    EXPECT_THROW(out.close(), BadPaddingException);
    EXPECT_EQ(sink->closes, 1);
    EXPECT_EQ(sink->data.size(), sealed.size() - 8);
}

TEST(CryptoStreamTest, AllocationFailuresInWholeMessagesAndStreams)
{
    if (!qvtest::allocationFaultsAvailable()) {
        GTEST_SKIP() << "built without fault injection";
    }
    const Blowfish key(kKey, 16);
    const std::vector<signed char> plain = sample(100);
    EXPECT_GT(qvtest::sweepAllocations([&] {
                  key.encrypt(plain.data(), int64_t(plain.size()), Blowfish::CBC, Blowfish::PKCS5_PADDING, kIv);
              }),
              0);
    EXPECT_GT(qvtest::sweepAllocations([&] {
                  Reference<RecordingOutput> sink(new RecordingOutput);
                  CipherOutputStream out(sink.get(), key, BlowfishCipher::ENCRYPT, Blowfish::CBC,
                                         Blowfish::PKCS5_PADDING, kIv);
                  out.write(plain.data(), int32_t(plain.size()));
                  out.close();
              }),
              0);
}
