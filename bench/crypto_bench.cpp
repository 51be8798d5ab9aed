// The library's digests and Blowfish-CBC beside OpenSSL's EVP interface, on
// the same 64 MiB buffer in the same run (OpenSSL is linked into this
// program only). "qv/SHA-256/portable" runs the portable SHA-256 code (the
// library's QVCL3_PORTABLE_CODE switch); OpenSSL's own portable speed is
// measured by running this program with OPENSSL_ia32cap=:~0x20000000, which
// hides the SHA extensions from it.
#include <qv/qvcl3.h>

#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr size_t kSize = size_t(64) << 20;

const std::vector<uint8_t>& data()
{
    static const std::vector<uint8_t> bytes = [] {
        std::vector<uint8_t> b(kSize);
        std::mt19937 random(7);
        for (uint8_t& x : b) {
            x = static_cast<uint8_t>(random());
        }
        return b;
    }();
    return bytes;
}

const uint8_t kKey[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
const uint8_t kIv[8] = {8, 7, 6, 5, 4, 3, 2, 1};

void qvDigest(benchmark::State& state, const char16_t* algorithm, bool portable)
{
    if (portable) {
        setenv("QVCL3_PORTABLE_CODE", "1", 1);
    }
    qv::crypto::MessageDigest md(algorithm);
    unsetenv("QVCL3_PORTABLE_CODE");
    for (auto _ : state) {
        benchmark::DoNotOptimize(md.digest(data().data(), int64_t(kSize)));
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kSize));
}

void opensslDigest(benchmark::State& state, const EVP_MD* md)
{
    EVP_MD_CTX* ctx = EVP_MD_CTX_new();
    unsigned char out[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    for (auto _ : state) {
        EVP_DigestInit_ex(ctx, md, nullptr);
        EVP_DigestUpdate(ctx, data().data(), kSize);
        EVP_DigestFinal_ex(ctx, out, &length);
        benchmark::DoNotOptimize(out);
    }
    EVP_MD_CTX_free(ctx);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kSize));
}

void qvBlowfishCbc(benchmark::State& state, bool encrypt)
{
    const qv::crypto::Blowfish key(kKey, 16);
    qv::crypto::BlowfishCipher cipher(
        key, encrypt ? qv::crypto::BlowfishCipher::ENCRYPT : qv::crypto::BlowfishCipher::DECRYPT,
        qv::crypto::Blowfish::CBC, qv::crypto::Blowfish::NO_PADDING, kIv);
    std::vector<uint8_t> out(kSize);
    for (auto _ : state) {
        benchmark::DoNotOptimize(cipher.update(data().data(), int32_t(kSize), out.data(), int32_t(kSize)));
        cipher.restart();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kSize));
}

void opensslBlowfishCbc(benchmark::State& state, bool encrypt)
{
    static OSSL_PROVIDER* legacy = OSSL_PROVIDER_load(nullptr, "legacy");
    static OSSL_PROVIDER* standard = OSSL_PROVIDER_load(nullptr, "default");
    EVP_CIPHER* bf = EVP_CIPHER_fetch(nullptr, "BF-CBC", nullptr);
    if (legacy == nullptr || standard == nullptr || bf == nullptr) {
        state.SkipWithError("OpenSSL has no Blowfish here (legacy provider missing)");
        return;
    }
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    std::vector<uint8_t> out(kSize + 8);
    for (auto _ : state) {
        EVP_CipherInit_ex(ctx, bf, nullptr, kKey, kIv, encrypt ? 1 : 0);
        EVP_CIPHER_CTX_set_padding(ctx, 0);
        int length = 0;
        EVP_CipherUpdate(ctx, out.data(), &length, data().data(), int(kSize));
        benchmark::DoNotOptimize(out.data());
    }
    EVP_CIPHER_CTX_free(ctx);
    EVP_CIPHER_free(bf);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(kSize));
}

} // namespace

BENCHMARK_CAPTURE(qvDigest, MD5, u"MD5", false)->Name("qv/MD5")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(opensslDigest, MD5, EVP_md5())->Name("openssl/MD5")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(qvDigest, SHA1, u"SHA-1", false)->Name("qv/SHA-1")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(opensslDigest, SHA1, EVP_sha1())->Name("openssl/SHA-1")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(qvDigest, SHA256, u"SHA-256", false)->Name("qv/SHA-256")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(qvDigest, SHA256Portable, u"SHA-256", true)
    ->Name("qv/SHA-256/portable")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(opensslDigest, SHA256, EVP_sha256())->Name("openssl/SHA-256")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(qvBlowfishCbc, Encrypt, true)->Name("qv/BF-CBC/encrypt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(opensslBlowfishCbc, Encrypt, true)->Name("openssl/BF-CBC/encrypt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(qvBlowfishCbc, Decrypt, false)->Name("qv/BF-CBC/decrypt")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(opensslBlowfishCbc, Decrypt, false)->Name("openssl/BF-CBC/decrypt")->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
