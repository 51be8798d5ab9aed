// Typed reads chosen by the input over the rest of it: every read either
// gives a value or ends with UnexpectedEOFException, and writing the values
// back with DataOutputStream reproduces exactly the bytes consumed.

#include "StreamFuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qv::io;
    fuzz::Reader reader(data, size);
    const int operations = reader.byte() % 32;
    uint8_t kinds[32];
    for (int i = 0; i < operations; ++i)
        kinds[i] = reader.byte();
    const int32_t chunk = reader.step();
    const bool buffered = reader.byte() & 1;
    qv::Reference<fuzz::ChunkedInput> source =
        qv::makeReference<fuzz::ChunkedInput>(reader.data(), reader.size(), chunk, chunk & 1);
    qv::Reference<InputStream> in = source;
    if (buffered)
        in = qv::makeReference<BufferedInputStream>(source.get(), chunk % 512);
    DataInputStream typed(in.get());
    qv::Reference<ByteArrayOutputStream> again = qv::makeReference<ByteArrayOutputStream>();
    DataOutputStream out(again.get());
    for (int i = 0; i < operations; ++i) {
        try {
            switch (kinds[i] % 12) {
            case 0: out.writeByte(typed.readByte()); break;
            case 1: out.writeInt16(typed.readInt16()); break;
            case 2: out.writeChar16(typed.readChar16()); break;
            case 3: out.writeInt32(typed.readInt32()); break;
            case 4: out.writeChar32(typed.readChar32()); break;
            case 5: out.writeInt64(typed.readInt64()); break;
            case 6: out.writeFloat(typed.readFloat()); break;
            case 7: out.writeDouble(typed.readDouble()); break;
            case 8: out.writeUnsignedInt16(typed.readUnsignedShort()); break;
            case 9: {
                const bool b = typed.readBool();
                fuzz::check(b == (reader.data()[again->size()] != 0), "readBool disagrees with the byte");
                out.writeByte(static_cast<signed char>(reader.data()[again->size()]));
                break;
            }
            case 10: {
                signed char block[300];
                const int32_t n = kinds[i] % 300;
                typed.readFully(block, n);
                out.write(block, n);
                break;
            }
            default: fuzz::check(typed.readString().getLength() == 0, "readString read something"); break;
            }
        } catch (const UnexpectedEOFException&) {
            fuzz::check(source->position() == reader.size(), "end reported before the end");
            break;
        }
    }
    fuzz::check(static_cast<size_t>(again->size()) <= reader.size(), "more bytes than consumed");
    fuzz::check(std::equal(again->getData(), again->getData() + again->size(),
                           reinterpret_cast<const signed char*>(reader.data())),
                "values do not write back to the bytes they came from");
    return 0;
}
