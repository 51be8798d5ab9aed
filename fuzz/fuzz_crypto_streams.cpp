// Blowfish decryption of arbitrary bytes in every mode, with the padding
// removal and the cipher and digest filter streams: whole-message calls and
// the streams (read or written in pieces) agree on the bytes or on the
// failure, whatever decrypts re-encrypts to the input, and the digest
// streams hash exactly what passes.

#include "FuzzSupport.h"

#include <qv/qvcl3.h>

#include <vector>

namespace {

using namespace qv::crypto;

enum Outcome { OK, BAD_PADDING, BAD_LENGTH };

struct Run {
    Outcome outcome = OK;
    std::vector<uint8_t> bytes;
    bool operator==(const Run& other) const
    {
        return outcome == other.outcome && (outcome != OK || bytes == other.bytes);
    }
};

template <class Operation>
Run attempt(Operation&& operation)
{
    Run run;
    try {
        operation(run.bytes);
    } catch (const BadPaddingException&) {
        run.outcome = BAD_PADDING;
    } catch (const IllegalBlockSizeException&) {
        run.outcome = BAD_LENGTH;
    }
    return run;
}

std::vector<uint8_t> bytesOf(const qv::io::ByteArrayOutputStream& out)
{
    const uint8_t* data = reinterpret_cast<const uint8_t*>(out.getData());
    return std::vector<uint8_t>(data, data + out.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Reader reader(data, size);
    const uint8_t options = reader.byte();
    const Blowfish::Mode mode = static_cast<Blowfish::Mode>(options & 3);
    const bool blockMode = mode == Blowfish::ECB || mode == Blowfish::CBC;
    const Blowfish::Padding padding = blockMode && (options & 4) == 0 ? Blowfish::PKCS5_PADDING : Blowfish::NO_PADDING;
    const int step = reader.step();
    uint8_t key[56];
    const int keyLength = Blowfish::MIN_KEY_LENGTH + reader.byte() % 8;
    for (int i = 0; i < keyLength; ++i) {
        key[i] = reader.byte();
    }
    uint8_t iv[8];
    for (uint8_t& b : iv) {
        b = reader.byte();
    }
    const std::vector<uint8_t> input(reader.data(), reader.data() + reader.size());
    const int32_t length = static_cast<int32_t>(input.size());
    const signed char* signedInput = reinterpret_cast<const signed char*>(input.data());
    const Blowfish cipher(key, keyLength);

    const Run whole =
        attempt([&](std::vector<uint8_t>& out) { out = cipher.decrypt(input.data(), length, mode, padding, iv); });

    const Run read = attempt([&](std::vector<uint8_t>& out) {
        CipherInputStream in(new qv::io::ByteArrayInputStream(signedInput, length), cipher, BlowfishCipher::DECRYPT,
                             mode, padding, iv);
        std::vector<signed char> buffer(size_t(step < 4096 ? step : 4096));
        for (;;) {
            const int32_t n = in.read(buffer.data(), int32_t(buffer.size()));
            if (n < 0) {
                break;
            }
            out.insert(out.end(), buffer.begin(), buffer.begin() + n);
        }
    });
    fuzz::check(read == whole, "CipherInputStream differs from Blowfish::decrypt");

    const Run written = attempt([&](std::vector<uint8_t>& out) {
        qv::Reference<qv::io::ByteArrayOutputStream> sink(new qv::io::ByteArrayOutputStream);
        CipherOutputStream stream(sink.get(), cipher, BlowfishCipher::DECRYPT, mode, padding, iv);
        for (int32_t at = 0; at < length; at += step) {
            stream.write(signedInput + at, length - at < step ? length - at : step);
        }
        stream.close();
        out = bytesOf(*sink);
    });
    fuzz::check(written == whole, "CipherOutputStream differs from Blowfish::decrypt");

    if (whole.outcome == OK) {
        const std::vector<uint8_t> again =
            cipher.encrypt(whole.bytes.data(), int64_t(whole.bytes.size()), mode, padding, iv);
        fuzz::check(again == input, "decrypted bytes do not encrypt back to the input");
    } else {
        fuzz::check(blockMode, "a stream mode refused its input");
        fuzz::check(whole.outcome == BAD_PADDING || padding == Blowfish::NO_PADDING || length % 8 != 0 || length == 0,
                    "whole blocks refused for their length");
    }

    static const char16_t* const kAlgorithms[] = {u"MD5", u"SHA-1", u"SHA-256"};
    MessageDigest expected(kAlgorithms[options % 3]);
    const std::vector<uint8_t> digest = expected.digest(input.data(), length);
    qv::Reference<MessageDigest> md(new MessageDigest(kAlgorithms[options % 3]));
    DigestInputStream digesting(new qv::io::ByteArrayInputStream(signedInput, length), md.get());
    std::vector<signed char> buffer(size_t(step < 4096 ? step : 4096));
    while (digesting.read(buffer.data(), int32_t(buffer.size())) >= 0) {
    }
    fuzz::check(md->digest() == digest, "DigestInputStream hashed something else");
    return 0;
}
