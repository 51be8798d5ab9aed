#include "AllocationSweep.h"
#include "CryptoTestSupport.h"

#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include "Thrown.h"

#include <cstdlib>
#include <string>
#include <vector>

using qv::String;
using qv::crypto::MessageDigest;
using qv::crypto::NoSuchAlgorithmException;
using qvtest::narrow;

namespace {

std::string hashOf(const char16_t* algorithm, const std::string& text)
{
    qv::Reference<MessageDigest> md = MessageDigest::getInstance(algorithm);
    md->update(text.data(), int64_t(text.size()));
    return narrow(md->digestHex());
}

// SHA-1 and SHA-256 run on the SHA extensions where the processor has them; the
// variable makes the library take its portable code for digests made while
// it is set.
class PortableCode {
public:
    explicit PortableCode(bool on)
    {
        if (on) {
            setenv("QVCL3_PORTABLE_CODE", "1", 1);
        } else {
            unsetenv("QVCL3_PORTABLE_CODE");
        }
    }
    ~PortableCode() { unsetenv("QVCL3_PORTABLE_CODE"); }
};

class DigestPaths : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override
    {
        if (!GetParam() && (QVCpuFeatures() & QV_CPU_SHA) == 0) {
            GTEST_SKIP() << "this processor has no SHA extensions; the portable run covers SHA-1 and SHA-256";
        }
    }
    PortableCode m_portable{GetParam()};
};

} // namespace

TEST_P(DigestPaths, PublishedVectors)
{
    EXPECT_EQ((QVCpuFeatures() & QV_CPU_SHA) != 0, !GetParam());
    // RFC 1321, appendix A.5.
    const std::pair<const char*, const char*> md5[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
    };
    for (const auto& [text, expected] : md5) {
        EXPECT_EQ(hashOf(u"MD5", text), expected) << text;
    }
    // FIPS 180-4 examples: one block, two blocks, and a million 'a'.
    const std::string twoBlocks = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    EXPECT_EQ(hashOf(u"SHA-1", "abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hashOf(u"SHA-1", twoBlocks), "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
    EXPECT_EQ(hashOf(u"SHA-256", "abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hashOf(u"SHA-256", twoBlocks), "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    const std::string million(1000000, 'a');
    EXPECT_EQ(hashOf(u"SHA-1", million), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
    EXPECT_EQ(hashOf(u"SHA-256", million), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
    EXPECT_EQ(hashOf(u"MD5", million), "7707d6ae4e027c70eea2a935c2296f21");
}

// The padding boundaries (55, 56, 63, 64 bytes and their multiples) and the
// split points of update must not change the digest.
TEST_P(DigestPaths, AnySplitGivesTheOneShotDigest)
{
    std::mt19937 random(20);
    const std::vector<uint8_t> data = qvtest::randomBytes(random, 300);
    for (const char16_t* algorithm : {u"MD5", u"SHA-1", u"SHA-256"}) {
        MessageDigest whole(algorithm);
        MessageDigest split(algorithm);
        for (int64_t length : {0, 1, 55, 56, 57, 63, 64, 65, 119, 120, 127, 128, 129, 191, 192, 300}) {
            const std::vector<uint8_t> expected = whole.digest(data.data(), length);
            for (int64_t cut : {int64_t(0), int64_t(1), length / 2, length - 1}) {
                if (cut < 0 || cut > length) {
                    continue;
                }
                split.update(data.data(), cut);
                for (int64_t i = cut; i < length; ++i) {
                    split.update(data[size_t(i)]);
                }
                EXPECT_EQ(split.digest(), expected) << narrow(split.getAlgorithm()) << " " << length << "/" << cut;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Paths, DigestPaths, ::testing::Values(true, false),
                         [](const ::testing::TestParamInfo<bool>& info) {
                             return info.param ? "Portable" : "Extensions";
                         });

TEST(MessageDigestTest, NamesLengthsAndErrors)
{
    const std::tuple<const char16_t*, const char*, int32_t> names[] = {
        {u"md5", "MD5", 16},   {u"SHA-1", "SHA-1", 20},     {u"sha1", "SHA-1", 20},
        {u"Sha", "SHA-1", 20}, {u"SHA-256", "SHA-256", 32}, {u"sha256", "SHA-256", 32},
    };
    for (const auto& [asked, canonical, length] : names) {
        qv::Reference<MessageDigest> md = MessageDigest::getInstance(asked);
        EXPECT_EQ(narrow(md->getAlgorithm()), canonical);
        EXPECT_EQ(md->getDigestLength(), length);
        EXPECT_EQ(md->digest().size(), size_t(length));
    }
    EXPECT_EQ(narrow(MessageDigest(u"SHA-256").toString()), "SHA-256 message digest (32 bytes)");
    for (const char16_t* unknown : {u"SHA-512", u"", u"MD5 "})
        EXPECT_EQ(qvtest::messageOf<NoSuchAlgorithmException>([&] { MessageDigest::getInstance(unknown); },
                                                              qv::Result(0x80004005)),
                  "unknown message digest algorithm \"" + narrow(unknown) + "\"");
    MessageDigest md(u"MD5");
    md.update("ab", 2);
    EXPECT_THROW(md.update("x", -1), qv::ResultException);
    EXPECT_THROW(md.update(nullptr, 1), qv::ResultException);
    md.update(nullptr, 0);
    uint8_t out[16];
    EXPECT_EQ(qvtest::resultOf<qv::ResultException>([&] { md.digestTo(out, 15); }), qv::Result(0x80004009));
    // Nothing was lost on the way: still the hash of "ab".
    md.update("c", 1);
    EXPECT_EQ(md.digestTo(out, 16), 16);
    EXPECT_EQ(qvtest::toHex(out, 16), "900150983CD24FB0D6963F7D28E17F72");
}

TEST(MessageDigestTest, CloneForksAndResetStartsOver)
{
    MessageDigest md(u"SHA-256");
    md.update("ab", 2);
    qv::Reference<MessageDigest> fork(md.clone());
    EXPECT_EQ(fork->GetRefCount(), 1);
    fork->update("c", 1);
    md.update("d", 1);
    EXPECT_EQ(narrow(fork->digestHex()), hashOf(u"SHA-256", "abc"));
    EXPECT_EQ(narrow(md.digestHex()), hashOf(u"SHA-256", "abd"));
    md.update("zzz", 3);
    md.reset();
    md.update("abc", 3);
    EXPECT_EQ(narrow(md.digestHex()), hashOf(u"SHA-256", "abc"));
    // digest() resets too.
    EXPECT_EQ(narrow(md.digestHex()), hashOf(u"SHA-256", ""));
}

TEST(MessageDigestTest, TextIsHashedAsUtf8)
{
    MessageDigest md(u"MD5");
    md.update(String(u"Gr\u00fc\u00dfe \U0001F600"));
    EXPECT_EQ(narrow(md.digestHex()), hashOf(u"MD5", "Gr\xC3\xBC\xC3\x9F"
                                                     "e \xF0\x9F\x98\x80"));
    const char16_t lone[] = {u'a', char16_t(0xD800), u'b', 0};
    md.update(String(lone));
    EXPECT_EQ(narrow(md.digestHex()), hashOf(u"MD5", "a\xEF\xBF\xBD"
                                                     "b"));
}

// The 64-bit length counter: past 2^32 bytes the length field's upper half
// is in use. Expected value from `head -c 4294967299 /dev/zero | sha256sum`.
TEST(MessageDigestTest, InputBeyondFourGibibytes)
{
    MessageDigest md(u"SHA-256");
    const std::vector<uint8_t> zeros(size_t(1) << 24, 0);
    for (int i = 0; i < 256; ++i) {
        md.update(zeros.data(), int64_t(zeros.size()));
    }
    md.update(zeros.data(), 3);
    EXPECT_EQ(narrow(md.digestHex()), "930fa067940ff8d9f427e3a116b7598503c70ce7380d66ff65f8de33d558f7f3");
}

TEST(MessageDigestTest, AllocationFailuresLeaveTheHashRunning)
{
    if (!qvtest::allocationFaultsAvailable()) {
        GTEST_SKIP() << "built without fault injection";
    }
    qvtest::sweepAllocations([] { MessageDigest::getInstance(u"SHA-1"); });
    MessageDigest md(u"MD5");
    md.update("ab", 2);
    const MessageDigest before(md);
    auto unchanged = [&] {
        MessageDigest a(md);
        MessageDigest b(before);
        EXPECT_EQ(a.digest(), b.digest());
    };
    EXPECT_GT(qvtest::sweepAllocations([&] { md.digest(); }, unchanged), 0);
    md.update("ab", 2);
    EXPECT_GT(qvtest::sweepAllocations([&] { md.digestHex(); }, unchanged), 0);
    md.update("ab", 2);
    qvtest::sweepAllocations([&] { md.update(String(u"text")); }, unchanged);
}
