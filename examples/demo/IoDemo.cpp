// Byte streams: a small file written through buffered data streams and read
// back, bytes as alphanumeric text, and a file path normalised.
#include "Demo.h"

#include <cmath>
#include <cstdio>
#include <unistd.h>

void demoIo()
{
    using namespace qv::io;

    section("Buffered data streams to a file and back");
    char pattern[] = "/tmp/qvcl3-demo-XXXXXX";
    const qv::util::FilePath dir(qv::String(mkdtemp(pattern), -1, u"UTF-8"));
    const qv::util::FilePath file = dir.append(qv::String(u"./records/../values.bin"));
    {
        qv::Reference<FileOutputStream> sink = qv::makeReference<FileOutputStream>(file);
        qv::Reference<BufferedOutputStream> buffered = qv::makeReference<BufferedOutputStream>(sink.get(), 4096);
        DataOutputStream out(buffered.get());
        out.writeInt32(20240601);
        out.writeDouble(-0.0);
        out.writeChar16(u'\u20AC');
        out.writeBool(true);
        out.close();
    }
    {
        qv::Reference<FileInputStream> source = qv::makeReference<FileInputStream>(file);
        std::printf("%s holds %lld bytes\n", file.toNarrow().c_str(), static_cast<long long>(source->getSize()));
        qv::Reference<BufferedInputStream> buffered = qv::makeReference<BufferedInputStream>(source.get(), 4096);
        DataInputStream in(buffered.get());
        const int32_t date = in.readInt32();
        const double zero = in.readDouble();
        const char16_t euro = in.readChar16();
        const bool flag = in.readBool();
        std::printf("int32 %d, double %g (sign bit %d), char16 U+%04X, bool %d\n", date, zero,
                    std::signbit(zero) ? 1 : 0, static_cast<unsigned>(euro), flag ? 1 : 0);
        try {
            in.readInt32();
        } catch (const UnexpectedEOFException&) {
            std::printf("reading past the end: UnexpectedEOFException\n");
        }
        in.close();
    }
    unlink(file.toNarrow().c_str());
    rmdir(dir.toNarrow().c_str());
    try {
        FileInputStream missing(qv::String(u"/no/such/file"));
    } catch (const IoException& e) {
        std::printf("IoException: %s\n", e.getDescription().toUtf8().c_str());
    }

    section("Bytes as alphanumeric text");
    const signed char bytes[] = {'q', 'v', 0, static_cast<signed char>(0xFF), 42};
    qv::Reference<ByteArrayOutputStream> text = qv::makeReference<ByteArrayOutputStream>();
    AlphaNumOutputStream encoder(text.get());
    encoder.write(bytes, 5);
    encoder.flush();
    std::printf("71 76 00 FF 2A -> %s\n", text->toString().toUtf8().c_str());
    qv::Reference<ByteArrayInputStream> source = qv::makeReference<ByteArrayInputStream>(text->getData(), text->size());
    AlphaNumInputStream decoder(source.get());
    signed char back[8];
    const int32_t n = decoder.read(back, 8);
    std::printf("decoded %d bytes:", n);
    for (int32_t i = 0; i < n; ++i)
        std::printf(" %02X", static_cast<unsigned char>(back[i]));
    std::printf("\n");

    section("File paths");
    const qv::util::FilePath path(qv::String(u"C:\\logs\\.\\2024\\..\\app.log"));
    std::printf("%s: directory %s, base name %s, extension %s\n", path.toNarrow().c_str(),
                path.getDirectory().toUtf8().c_str(), path.getBaseName().toUtf8().c_str(),
                path.getExtension().toUtf8().c_str());
}
