#include "CryptoTestSupport.h"

#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using qv::crypto::Blowfish;
using qv::crypto::MessageDigest;
using qvtest::runCommand;
using qvtest::TempFile;
using qvtest::toHex;

namespace {

bool haveOpenSsl()
{
    int status = 0;
    runCommand("openssl version 2>/dev/null", &status);
    return status == 0;
}

unsigned testSeed()
{
    const unsigned seed = std::random_device()();
    std::printf("random seed %u\n", seed);
    return seed;
}

std::string lower(std::string text)
{
    for (char& c : text) {
        c = char(std::tolower(static_cast<unsigned char>(c)));
    }
    return text;
}

// The command that runs "openssl enc" with Blowfish, or "" where the
// installed OpenSSL has none (OpenSSL 3 keeps it in its legacy provider).
std::string blowfishCommand()
{
    const std::string probe = " -bf-cbc -K 00112233445566778899AABBCCDDEEFF -iv 0011223344556677 -in /dev/null "
                              ">/dev/null 2>&1";
    for (const std::string prefix : {"openssl enc", "openssl enc -provider legacy -provider default"}) {
        int status = 0;
        runCommand(prefix + probe, &status);
        if (status == 0) {
            return prefix;
        }
    }
    return std::string();
}

} // namespace

TEST(OpenSslDifferentialTest, DigestsOfRandomLengths)
{
    if (!haveOpenSsl()) {
        GTEST_SKIP() << "no openssl command";
    }
    const unsigned seed = testSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::pair<const char16_t*, const char*> algorithms[] = {
        {u"MD5", "-md5"}, {u"SHA-1", "-sha1"}, {u"SHA-256", "-sha256"}};
    TempFile file;
    ASSERT_FALSE(file.path().empty());
    for (int round = 0; round < 25; ++round) {
        const size_t length = round < 3 ? size_t(round) * 64 + 55 : random() % 100001;
        const std::vector<uint8_t> data = qvtest::randomBytes(random, length);
        file.write(data);
        for (const auto& [name, option] : algorithms) {
            int status = 0;
            const std::string output =
                runCommand(std::string("openssl dgst ") + option + " -r " + file.path(), &status);
            ASSERT_EQ(status, 0);
            MessageDigest md(name);
            EXPECT_EQ(lower(toHex(md.digest(data.data(), int64_t(length)))), output.substr(0, output.find(' ')))
                << option << " length " << length;
        }
    }
}

TEST(OpenSslDifferentialTest, BlowfishInEveryModeAgainstOpenSslEnc)
{
    if (!haveOpenSsl()) {
        GTEST_SKIP() << "no openssl command";
    }
    const std::string command = blowfishCommand();
    if (command.empty()) {
        GTEST_SKIP() << "the installed OpenSSL offers no Blowfish (its legacy provider is missing)";
    }
    const unsigned seed = testSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    struct Case {
        const char* option;
        Blowfish::Mode mode;
        Blowfish::Padding padding;
    };
    const Case cases[] = {
        {"-bf-cbc", Blowfish::CBC, Blowfish::PKCS5_PADDING},     {"-bf-ecb", Blowfish::ECB, Blowfish::PKCS5_PADDING},
        {"-bf-cbc -nopad", Blowfish::CBC, Blowfish::NO_PADDING}, {"-bf-cfb", Blowfish::CFB64, Blowfish::NO_PADDING},
        {"-bf-ofb", Blowfish::OFB64, Blowfish::NO_PADDING},
    };
    TempFile in;
    TempFile out;
    for (int round = 0; round < 8; ++round) {
        for (const Case& c : cases) {
            // OpenSSL's enc takes Blowfish keys of 16 bytes.
            const std::vector<uint8_t> key = qvtest::randomBytes(random, 16);
            const std::vector<uint8_t> iv = qvtest::randomBytes(random, 8);
            size_t length = random() % 5000;
            if (c.padding == Blowfish::NO_PADDING && c.mode == Blowfish::CBC) {
                length &= ~size_t(7);
            }
            const std::vector<uint8_t> data = qvtest::randomBytes(random, length);
            in.write(data);
            int status = 0;
            runCommand(command + " " + c.option + " -K " + toHex(key) + " -iv " + toHex(iv) + " -in " + in.path() +
                           " -out " + out.path() + " 2>&1",
                       &status);
            ASSERT_EQ(status, 0) << c.option;
            const std::vector<uint8_t> expected = out.read();
            const Blowfish cipher(key.data(), 16);
            EXPECT_EQ(cipher.encrypt(data.data(), int64_t(length), c.mode, c.padding, iv.data()), expected)
                << c.option << " length " << length;
            EXPECT_EQ(cipher.decrypt(expected.data(), int64_t(expected.size()), c.mode, c.padding, iv.data()), data)
                << c.option << " length " << length;
        }
    }
}
