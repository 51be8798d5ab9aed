// Random reads, skips, marks and resets on a BufferedInputStream over a
// source that trickles: every byte handed out is the source's byte at the
// stream's logical position, which only reset moves backwards (to the mark).

#include "StreamFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qv::io;
    fuzz::Reader reader(data, size);
    const int operations = reader.byte();
    std::vector<uint8_t> script;
    for (int i = 0; i < operations * 2; ++i)
        script.push_back(reader.byte());
    const int32_t bufferSize = reader.byte();
    const int32_t chunk = reader.step();
    const uint8_t* bytes = reader.data();
    const size_t length = reader.size();
    qv::Reference<fuzz::ChunkedInput> source = qv::makeReference<fuzz::ChunkedInput>(bytes, length, chunk, chunk & 2);
    qv::Reference<BufferedInputStream> in = qv::makeReference<BufferedInputStream>(source.get(), bufferSize);
    size_t position = 0;
    long mark = -1;
    std::vector<signed char> buffer(600);
    for (int i = 0; i < operations; ++i) {
        const int32_t n = static_cast<int32_t>(script[2 * i + 1]) * 2 - 10;
        switch (script[2 * i] % 6) {
        case 0:
        case 1: {
            const int32_t got = in->read(buffer.data(), n);
            fuzz::check(got <= (n < 0 ? 0 : n) && got >= -1, "read count out of range");
            fuzz::check(got != -1 || position == length, "end before the end");
            for (int32_t k = 0; k < got; ++k)
                fuzz::check(static_cast<uint8_t>(buffer[static_cast<size_t>(k)]) ==
                                bytes[position + static_cast<size_t>(k)],
                            "wrong byte");
            if (got > 0)
                position += static_cast<size_t>(got);
            break;
        }
        case 2: {
            const int c = in->read();
            fuzz::check(c == (position < length ? bytes[position] : -1), "wrong single byte");
            if (c >= 0)
                ++position;
            break;
        }
        case 3: {
            const int32_t skipped = in->skip(n);
            fuzz::check(skipped >= 0 && skipped <= (n < 0 ? 0 : n), "skip count out of range");
            position += static_cast<size_t>(skipped);
            break;
        }
        case 4:
            in->mark(n);
            mark = static_cast<long>(position);
            break;
        default:
            try {
                in->reset();
                fuzz::check(mark >= 0, "reset without a mark");
                position = static_cast<size_t>(mark);
            } catch (const IoException&) {
            }
            break;
        }
        fuzz::check(position <= length, "past the end");
    }
    in->close();
    return 0;
}
