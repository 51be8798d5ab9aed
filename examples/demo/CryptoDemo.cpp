// Message digests and the Blowfish cipher, directly and as streams.
#include "Demo.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

void printHex(const char* label, const std::vector<uint8_t>& bytes)
{
    std::printf("%s", label);
    for (uint8_t b : bytes) {
        std::printf("%02x", b);
    }
    std::printf("\n");
}

} // namespace

void demoCrypto()
{
    section("Message digests (MD5 and SHA-1 only for existing data; SHA-256 for anything new)");
    const qv::String text(u"The quick brown fox jumps over the lazy dog");
    std::printf("text: %s\n", text.toUtf8().c_str());
    for (const char16_t* algorithm : {u"MD5", u"SHA-1", u"SHA-256"}) {
        qv::Reference<qv::crypto::MessageDigest> md = qv::crypto::MessageDigest::getInstance(algorithm);
        md->update(text);
        std::printf("%-8s %s\n", utf8(algorithm).c_str(), md->digestHex().toUtf8().c_str());
    }
    try {
        qv::crypto::MessageDigest::getInstance(u"SHA-512");
    } catch (const qv::crypto::NoSuchAlgorithmException& e) {
        std::printf("NoSuchAlgorithmException: %s\n", e.getDescription().toUtf8().c_str());
    }

    section("Blowfish-CBC with PKCS #5 padding, round trip");
    const uint8_t key[] = {'s', 'e', 'c', 'r', 'e', 't', ' ', 'k', 'e', 'y'};
    const uint8_t iv[] = {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};
    const qv::crypto::Blowfish cipher(key, sizeof key);
    const std::string plain = "Attack at dawn, bring 21 biscuits.";
    const std::vector<uint8_t> sealed = cipher.encrypt(plain.data(), int64_t(plain.size()), qv::crypto::Blowfish::CBC,
                                                       qv::crypto::Blowfish::PKCS5_PADDING, iv);
    printHex("ciphertext: ", sealed);
    const std::vector<uint8_t> opened = cipher.decrypt(sealed.data(), int64_t(sealed.size()), qv::crypto::Blowfish::CBC,
                                                       qv::crypto::Blowfish::PKCS5_PADDING, iv);
    std::printf("decrypted:  %s\n", std::string(opened.begin(), opened.end()).c_str());
    const uint8_t wrongKey[] = {'w', 'r', 'o', 'n', 'g', ' ', 'k', 'e', 'y'};
    try {
        qv::crypto::Blowfish(wrongKey, sizeof wrongKey)
            .decrypt(sealed.data(), int64_t(sealed.size()), qv::crypto::Blowfish::CBC,
                     qv::crypto::Blowfish::PKCS5_PADDING, iv);
        std::printf("the wrong key happened to give valid padding (1 chance in about 256)\n");
    } catch (const qv::crypto::BadPaddingException& e) {
        std::printf("wrong key: BadPaddingException(\"%s\")\n", e.getDescription().toUtf8().c_str());
    }

    section("Encrypting and hashing on the way through streams");
    qv::Reference<qv::io::ByteArrayOutputStream> store(new qv::io::ByteArrayOutputStream);
    qv::Reference<qv::crypto::MessageDigest> md = qv::crypto::MessageDigest::getInstance(u"SHA-256");
    qv::Reference<qv::crypto::CipherOutputStream> encrypting(
        new qv::crypto::CipherOutputStream(store.get(), cipher, qv::crypto::BlowfishCipher::ENCRYPT,
                                           qv::crypto::Blowfish::CBC, qv::crypto::Blowfish::PKCS5_PADDING, iv));
    qv::crypto::DigestOutputStream hashing(encrypting.get(), md.get());
    hashing.write(plain.data(), int32_t(plain.size()));
    hashing.close();
    std::printf("%d bytes stored, same as above: %s; SHA-256 of the plaintext %s\n", store->size(),
                std::vector<uint8_t>(store->getData(), store->getData() + store->size()) == sealed ? "yes" : "no",
                md->digestHex().toUtf8().c_str());
}
