#include "CryptoTestSupport.h"

#include <qv/qvcl3.h>

#include <gtest/gtest.h>

#include "Thrown.h"

#include <cstring>
#include <string>
#include <vector>

using qv::crypto::BadPaddingException;
using qv::crypto::Blowfish;
using qv::crypto::BlowfishCipher;
using qv::crypto::IllegalBlockSizeException;
using qv::crypto::InvalidKeyException;
using qvtest::fromHex;
using qvtest::toHex;

namespace {

struct EcbVector {
    const char* key;
    const char* plain;
    const char* cipher;
};

// Eric Young's ECB set (34 triples with 8-byte keys), then the
// variable-key-length set: one key cut to 4 .. 24 bytes, one plaintext.
const EcbVector kEcbVectors[] = {
    {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
    {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
    {"3000000000000000", "1000000000000001", "7D856F9A613063F2"},
    {"1111111111111111", "1111111111111111", "2466DD878B963C9D"},
    {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
    {"1111111111111111", "0123456789ABCDEF", "7D0CC630AFDA1EC7"},
    {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
    {"FEDCBA9876543210", "0123456789ABCDEF", "0ACEAB0FC6A0A28D"},
    {"7CA110454A1A6E57", "01A1D6D039776742", "59C68245EB05282B"},
    {"0131D9619DC1376E", "5CD54CA83DEF57DA", "B1B8CC0B250F09A0"},
    {"07A1133E4A0B2686", "0248D43806F67172", "1730E5778BEA1DA4"},
    {"3849674C2602319E", "51454B582DDF440A", "A25E7856CF2651EB"},
    {"04B915BA43FEB5B6", "42FD443059577FA2", "353882B109CE8F1A"},
    {"0113B970FD34F2CE", "059B5E0851CF143A", "48F4D0884C379918"},
    {"0170F175468FB5E6", "0756D8E0774761D2", "432193B78951FC98"},
    {"43297FAD38E373FE", "762514B829BF486A", "13F04154D69D1AE5"},
    {"07A7137045DA2A16", "3BDD119049372802", "2EEDDA93FFD39C79"},
    {"04689104C2FD3B2F", "26955F6835AF609A", "D887E0393C2DA6E3"},
    {"37D06BB516CB7546", "164D5E404F275232", "5F99D04F5B163969"},
    {"1F08260D1AC2465E", "6B056E18759F5CCA", "4A057A3B24D3977B"},
    {"584023641ABA6176", "004BD6EF09176062", "452031C1E4FADA8E"},
    {"025816164629B007", "480D39006EE762F2", "7555AE39F59B87BD"},
    {"49793EBC79B3258F", "437540C8698F3CFA", "53C55F9CB49FC019"},
    {"4FB05E1515AB73A7", "072D43A077075292", "7A8E7BFA937E89A3"},
    {"49E95D6D4CA229BF", "02FE55778117F12A", "CF9C5D7A4986ADB5"},
    {"018310DC409B26D6", "1D9D5C5018F728C2", "D1ABB290658BC778"},
    {"1C587F1C13924FEF", "305532286D6F295A", "55CB3774D13EF201"},
    {"0101010101010101", "0123456789ABCDEF", "FA34EC4847B268B2"},
    {"1F1F1F1F0E0E0E0E", "0123456789ABCDEF", "A790795108EA3CAE"},
    {"E0FEE0FEF1FEF1FE", "0123456789ABCDEF", "C39E072D9FAC631D"},
    {"0000000000000000", "FFFFFFFFFFFFFFFF", "014933E0CDAFF6E4"},
    {"FFFFFFFFFFFFFFFF", "0000000000000000", "F21E9A77B71C49BC"},
    {"0123456789ABCDEF", "0000000000000000", "245946885754369A"},
    {"FEDCBA9876543210", "FFFFFFFFFFFFFFFF", "6B5C5A9C5D9E0A5A"},
    {"F0E1D2C3", "FEDCBA9876543210", "BE1E639408640F05"},
    {"F0E1D2C3B4", "FEDCBA9876543210", "B39E44481BDB1E6E"},
    {"F0E1D2C3B4A5", "FEDCBA9876543210", "9457AA83B1928C0D"},
    {"F0E1D2C3B4A596", "FEDCBA9876543210", "8BB77032F960629D"},
    {"F0E1D2C3B4A59687", "FEDCBA9876543210", "E87A244E2CC85E82"},
    {"F0E1D2C3B4A5968778", "FEDCBA9876543210", "15750E7A4F4EC577"},
    {"F0E1D2C3B4A596877869", "FEDCBA9876543210", "122BA70B3AB64AE0"},
    {"F0E1D2C3B4A5968778695A", "FEDCBA9876543210", "3A833C9AFFC537F6"},
    {"F0E1D2C3B4A5968778695A4B", "FEDCBA9876543210", "9409DA87A90F6BF2"},
    {"F0E1D2C3B4A5968778695A4B3C", "FEDCBA9876543210", "884F80625060B8B4"},
    {"F0E1D2C3B4A5968778695A4B3C2D", "FEDCBA9876543210", "1F85031C19E11968"},
    {"F0E1D2C3B4A5968778695A4B3C2D1E", "FEDCBA9876543210", "79D9373A714CA34F"},
    {"F0E1D2C3B4A5968778695A4B3C2D1E0F", "FEDCBA9876543210", "93142887EE3BE15C"},
    {"F0E1D2C3B4A5968778695A4B3C2D1E0F00", "FEDCBA9876543210", "03429E838CE2D14B"},
    {"F0E1D2C3B4A5968778695A4B3C2D1E0F0011", "FEDCBA9876543210", "A4299E27469FF67B"},
    {"F0E1D2C3B4A5968778695A4B3C2D1E0F001122", "FEDCBA9876543210", "AFD5AED1C1BC96A8"},
    {"F0E1D2C3B4A5968778695A4B3C2D1E0F00112233", "FEDCBA9876543210", "10851C0E3858DA9F"},
    {"F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344", "FEDCBA9876543210", "E6F51ED79B9DB21F"},
    {"F0E1D2C3B4A5968778695A4B3C2D1E0F001122334455", "FEDCBA9876543210", "64A6E14AFD36B46F"},
    {"F0E1D2C3B4A5968778695A4B3C2D1E0F00112233445566", "FEDCBA9876543210", "80C7D7D45A5479AD"},
    {"F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344556677", "FEDCBA9876543210", "05044B62FA52D080"},
};

const char* const kModeKey = "0123456789ABCDEFF0E1D2C3B4A59687";
const char* const kModeIv = "FEDCBA9876543210";
// "7654321 Now is the time for " and its terminating NUL.
const char* const kModePlain = "37363534333231204E6F77206973207468652074696D6520666F722000";

Blowfish keyFromHex(const char* hex)
{
    const std::vector<uint8_t> key = fromHex(hex);
    return Blowfish(key.data(), static_cast<int32_t>(key.size()));
}

} // namespace

TEST(BlowfishTest, PublishedEcbAndVariableKeyVectors)
{
    ASSERT_EQ(sizeof kEcbVectors / sizeof kEcbVectors[0], 55u);
    for (const EcbVector& v : kEcbVectors) {
        const Blowfish cipher = keyFromHex(v.key);
        const std::vector<uint8_t> plain = fromHex(v.plain);
        uint8_t block[8];
        cipher.encryptBlock(plain.data(), block);
        EXPECT_EQ(toHex(block, 8), v.cipher) << "key " << v.key;
        cipher.decryptBlock(block, block);
        EXPECT_EQ(toHex(block, 8), v.plain) << "key " << v.key;
        EXPECT_EQ(toHex(cipher.encrypt(plain.data(), 8, Blowfish::ECB, Blowfish::NO_PADDING)), v.cipher);
    }
}

TEST(BlowfishTest, PublishedCbcCfbOfbVectors)
{
    const Blowfish cipher = keyFromHex(kModeKey);
    const std::vector<uint8_t> iv = fromHex(kModeIv);
    std::vector<uint8_t> plain = fromHex(kModePlain);

    // The CBC example pads the 29 bytes with zeros to 32.
    std::vector<uint8_t> zeroPadded = plain;
    zeroPadded.resize(32, 0);
    const char* const cbc = "6B77B4D63006DEE605B156E27403979358DEB9E7154616D959F1652BD5FF92CC";
    EXPECT_EQ(toHex(cipher.encrypt(zeroPadded.data(), 32, Blowfish::CBC, Blowfish::NO_PADDING, iv.data())), cbc);
    const std::vector<uint8_t> cbcBytes = fromHex(cbc);
    EXPECT_EQ(cipher.decrypt(cbcBytes.data(), 32, Blowfish::CBC, Blowfish::NO_PADDING, iv.data()), zeroPadded);

    const char* const cfb = "E73214A2822139CAF26ECF6D2EB9E76E3DA3DE04D1517200519D57A6C3";
    const char* const ofb = "E73214A2822139CA62B343CC5B65587310DD908D0C241B2263C2CF80DA";
    for (const auto& [mode, expected] : {std::make_pair(Blowfish::CFB64, cfb), std::make_pair(Blowfish::OFB64, ofb)}) {
        const std::vector<uint8_t> encrypted =
            cipher.encrypt(plain.data(), int64_t(plain.size()), mode, Blowfish::NO_PADDING, iv.data());
        EXPECT_EQ(toHex(encrypted), expected);
        EXPECT_EQ(cipher.decrypt(encrypted.data(), int64_t(encrypted.size()), mode, Blowfish::NO_PADDING, iv.data()),
                  plain);
        // Fed one byte at a time, the stream modes give the same bytes.
        BlowfishCipher piecewise(cipher, BlowfishCipher::ENCRYPT, mode, Blowfish::NO_PADDING, iv.data());
        std::vector<uint8_t> out(plain.size());
        for (size_t i = 0; i < plain.size(); ++i) {
            ASSERT_EQ(piecewise.update(&plain[i], 1, &out[i], 1), 1);
        }
        EXPECT_EQ(piecewise.finish(nullptr, 0), 0);
        EXPECT_EQ(toHex(out), expected);
    }
}

TEST(BlowfishTest, KeyLengthsOutsideFourToFiftySixAreRefused)
{
    const std::vector<uint8_t> key(57, 0x5A);
    for (int32_t length : {-1, 0, 1, 3, 57, 72}) {
        try {
            Blowfish cipher(key.data(), length);
            ADD_FAILURE() << "length " << length << " accepted";
        } catch (const InvalidKeyException& e) {
            EXPECT_EQ(qvtest::narrow(e.getDescription()),
                      "Blowfish keys are 4 to 56 bytes long, not " + std::to_string(length));
        }
    }
    EXPECT_THROW(Blowfish(nullptr, 8), InvalidKeyException);
    Blowfish longest(key.data(), 56);
    EXPECT_TRUE(longest.hasKey());

    // A refused key leaves the old one in place; a new one replaces it.
    Blowfish cipher = keyFromHex(kEcbVectors[0].key);
    EXPECT_THROW(cipher.setKey(key.data(), 2), InvalidKeyException);
    uint8_t block[8] = {};
    cipher.encryptBlock(block, block);
    EXPECT_EQ(toHex(block, 8), kEcbVectors[0].cipher);
    const std::vector<uint8_t> other = fromHex(kEcbVectors[1].key);
    cipher.setKey(other.data(), 8);
    const std::vector<uint8_t> plain = fromHex(kEcbVectors[1].plain);
    cipher.encryptBlock(plain.data(), block);
    EXPECT_EQ(toHex(block, 8), kEcbVectors[1].cipher);

    Blowfish unkeyed;
    EXPECT_FALSE(unkeyed.hasKey());
    EXPECT_THROW(unkeyed.encryptBlock(block, block), InvalidKeyException);
    EXPECT_THROW(unkeyed.encrypt(block, 8, Blowfish::ECB, Blowfish::NO_PADDING), InvalidKeyException);
}

TEST(BlowfishTest, PaddedRoundTripsInEveryChunking)
{
    const Blowfish cipher = keyFromHex(kModeKey);
    const std::vector<uint8_t> iv = fromHex(kModeIv);
    for (Blowfish::Mode mode : {Blowfish::ECB, Blowfish::CBC}) {
        for (int32_t length = 0; length <= 41; ++length) {
            std::vector<uint8_t> plain(static_cast<size_t>(length));
            for (int32_t i = 0; i < length; ++i) {
                plain[size_t(i)] = uint8_t(i * 37 + 11);
            }
            const std::vector<uint8_t> whole =
                cipher.encrypt(plain.data(), length, mode, Blowfish::PKCS5_PADDING, iv.data());
            ASSERT_EQ(whole.size(), size_t(length / 8 * 8 + 8));
            for (int32_t step : {1, 3, 8, 13}) {
                for (BlowfishCipher::Direction direction : {BlowfishCipher::ENCRYPT, BlowfishCipher::DECRYPT}) {
                    const std::vector<uint8_t>& in = direction == BlowfishCipher::ENCRYPT ? plain : whole;
                    const std::vector<uint8_t>& expected = direction == BlowfishCipher::ENCRYPT ? whole : plain;
                    BlowfishCipher piecewise(cipher, direction, mode, Blowfish::PKCS5_PADDING, iv.data());
                    std::vector<uint8_t> out(in.size() + 16);
                    int32_t done = 0;
                    for (size_t at = 0; at < in.size(); at += size_t(step)) {
                        const int32_t piece = std::min<int32_t>(step, int32_t(in.size() - at));
                        const int32_t expectedSize = piecewise.getUpdateSize(piece);
                        ASSERT_EQ(piecewise.update(&in[at], piece, &out[size_t(done)], expectedSize), expectedSize);
                        done += expectedSize;
                    }
                    done += piecewise.finish(&out[size_t(done)], 8);
                    out.resize(size_t(done));
                    EXPECT_EQ(out, expected) << "mode " << mode << " length " << length << " step " << step;
                }
            }
        }
    }
}

TEST(BlowfishTest, MalformedCiphertextIsRefusedNotReturned)
{
    const Blowfish cipher = keyFromHex(kModeKey);
    const Blowfish wrongKey = keyFromHex("0123456789ABCDEFF0E1D2C3B4A59688");
    const std::vector<uint8_t> iv = fromHex(kModeIv);
    const std::string text = "stored password record";
    const std::vector<uint8_t> encrypted =
        cipher.encrypt(text.data(), int64_t(text.size()), Blowfish::CBC, Blowfish::PKCS5_PADDING, iv.data());
    EXPECT_THROW(wrongKey.decrypt(encrypted.data(), int64_t(encrypted.size()), Blowfish::CBC, Blowfish::PKCS5_PADDING,
                                  iv.data()),
                 BadPaddingException);
    for (int64_t length : {int64_t(0), int64_t(7), int64_t(encrypted.size() - 1)}) {
        EXPECT_THROW(cipher.decrypt(encrypted.data(), length, Blowfish::CBC, Blowfish::PKCS5_PADDING, iv.data()),
                     IllegalBlockSizeException)
            << length;
    }
    EXPECT_THROW(cipher.encrypt(text.data(), 5, Blowfish::ECB, Blowfish::NO_PADDING), IllegalBlockSizeException);

    // Every last-byte value but the right one is bad padding: 0, 9..255, and
    // values whose earlier padding bytes disagree.
    BlowfishCipher encryptor(cipher, BlowfishCipher::ENCRYPT, Blowfish::ECB, Blowfish::NO_PADDING);
    int accepted = 0;
    for (int last = 0; last < 256; ++last) {
        uint8_t block[8] = {1, 2, 3, 4, 5, 6, 2, uint8_t(last)};
        uint8_t sealed[8];
        encryptor.update(block, 8, sealed, 8);
        try {
            const std::vector<uint8_t> plain = cipher.decrypt(sealed, 8, Blowfish::ECB, Blowfish::PKCS5_PADDING);
            ++accepted;
            EXPECT_TRUE(last == 1 || last == 2) << last;
            EXPECT_EQ(plain.size(), size_t(8 - last));
        } catch (const BadPaddingException& e) {
            EXPECT_EQ(qvtest::narrow(e.getDescription()),
                      "Blowfish: bad padding (wrong key, wrong IV or damaged data)");
        }
    }
    EXPECT_EQ(accepted, 2);
}

TEST(BlowfishTest, ArgumentChecks)
{
    const Blowfish cipher = keyFromHex(kModeKey);
    const std::vector<uint8_t> iv = fromHex(kModeIv);
    uint8_t buffer[16] = {};
    auto expectCode = [](auto&& call, qv::Result code) {
        EXPECT_EQ(qvtest::resultOf<qv::ResultException>(call), code);
    };
    expectCode([&] { BlowfishCipher(cipher, BlowfishCipher::ENCRYPT, Blowfish::CBC, Blowfish::NO_PADDING); },
               qv::Result(0x80070057));
    expectCode(
        [&] { BlowfishCipher(cipher, BlowfishCipher::ENCRYPT, Blowfish::OFB64, Blowfish::PKCS5_PADDING, iv.data()); },
        qv::Result(0x80070057));
    expectCode([&] { cipher.encrypt(buffer, -1, Blowfish::ECB, Blowfish::PKCS5_PADDING); }, qv::Result(0x80070057));
    expectCode([&] { cipher.encrypt(nullptr, 8, Blowfish::ECB, Blowfish::PKCS5_PADDING); }, qv::Result(0x80070057));
    BlowfishCipher cbc(cipher, BlowfishCipher::ENCRYPT, Blowfish::CBC, Blowfish::PKCS5_PADDING, iv.data());
    EXPECT_EQ(cbc.getOutputSize(3), 11);
    ASSERT_EQ(cbc.update(buffer, 5, buffer + 8, 0), 0);
    // 5 held + 5 more make one block, which needs 8 bytes of room.
    expectCode([&] { cbc.update(buffer, 5, buffer + 8, 7); }, qv::Result(0x80004009));
    EXPECT_EQ(cbc.update(buffer, 5, buffer + 8, 8), 8);
    expectCode([&] { cbc.finish(buffer, 7); }, qv::Result(0x80004009));
    EXPECT_EQ(cbc.finish(buffer, 8), 8);
}
