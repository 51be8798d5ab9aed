// AlphaNum decoding of arbitrary text in arbitrary request sizes never
// crashes and gives the same bytes (or the same refusal) as one large
// request; encoding arbitrary bytes decodes back to them, with the kept
// extra zero byte when the length is not a multiple of 5.

#include "StreamFuzzSupport.h"

namespace {

struct Decoded {
    std::vector<signed char> bytes;
    bool refused = false;
};

Decoded decode(const uint8_t* text, size_t size, int32_t request, int32_t chunk)
{
    using namespace qv::io;
    Decoded result;
    qv::Reference<fuzz::ChunkedInput> source = qv::makeReference<fuzz::ChunkedInput>(text, size, chunk, false);
    AlphaNumInputStream in(source.get());
    std::vector<signed char> buffer(static_cast<size_t>(request));
    try {
        for (int32_t n; (n = in.read(buffer.data(), request)) > 0;)
            result.bytes.insert(result.bytes.end(), buffer.begin(), buffer.begin() + n);
    } catch (const qv::text::charset::InvalidCharacterException&) {
        result.refused = true;
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qv::io;
    fuzz::Reader reader(data, size);
    const int32_t request = reader.step() % 4096;
    const int32_t chunk = reader.step();
    const Decoded small = decode(reader.data(), reader.size(), request < 1 ? 1 : request, chunk);
    const Decoded whole = decode(reader.data(), reader.size(), 1 << 14, 1 << 14);
    fuzz::check(small.refused == whole.refused, "refusal depends on the request size");
    if (!whole.refused) {
        fuzz::check(small.bytes == whole.bytes, "bytes depend on the request size");
        const size_t characters = reader.size();
        fuzz::check(whole.bytes.size() == characters * 5 / 8 + (characters % 8 != 0 ? 1 : 0),
                    "wrong number of bytes for the text");
    }

    qv::Reference<ByteArrayOutputStream> text = qv::makeReference<ByteArrayOutputStream>();
    AlphaNumOutputStream out(text.get());
    const signed char* bytes = reinterpret_cast<const signed char*>(reader.data());
    const int32_t n = static_cast<int32_t>(reader.size());
    const int32_t first = n > 0 ? chunk % (n + 1) : 0;
    out.write(bytes, first);
    out.write(bytes + first, n - first);
    out.flush();
    fuzz::check(static_cast<size_t>(text->size()) == (reader.size() * 8 + 4) / 5, "wrong number of characters");
    const Decoded back = decode(reinterpret_cast<const uint8_t*>(text->getData()), static_cast<size_t>(text->size()),
                                request < 1 ? 1 : request, chunk);
    std::vector<signed char> expected(bytes, bytes + n);
    if (n % 5 != 0)
        expected.push_back(0);
    fuzz::check(!back.refused && back.bytes == expected, "bytes do not round-trip");
    return 0;
}
