// Readers and writers: text through converters, lines, and file channels.
#include "Demo.h"

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

qv::String tempFile(const char* name)
{
    std::string path = (std::filesystem::temp_directory_path() / name).string();
    return qv::String(path.c_str(), -1, u"UTF-8");
}

// Writes text to a new file in the named encoding.
void writeFile(const qv::String& path, const char16_t* text, const char16_t* encoding)
{
    using namespace qv::io;
    auto channel = FileChannel::open(path, FileChannel::WRITE | FileChannel::CREATE | FileChannel::TRUNCATE);
    auto writer = qv::makeReference<BufferedWriter>(
        qv::makeReference<OutputStreamWriter>(Channels::newOutputStream(channel.get()).get(), encoding).get());
    writer->write(text, -1);
    writer->close();
}

} // namespace

void demoTextIo()
{
    using namespace qv::io;
    section("A UTF-8 file read line by line and written as UTF-16LE");
    qv::String source = tempFile("qvcl3-demo-utf8.txt");
    qv::String target = tempFile("qvcl3-demo-utf16le.txt");
    writeFile(source, u"Grüße aus Köln\r\nΚαλημέρα\nПривет, мир\r😀 emoji\n", u"UTF-8");

    auto in = Channels::newInputStream(FileChannel::open(source, FileChannel::READ).get());
    auto lines = qv::makeReference<BufferedReader>(qv::makeReference<InputStreamReader>(in.get(), u"UTF-8").get());
    auto outChannel = FileChannel::open(target, FileChannel::WRITE | FileChannel::CREATE | FileChannel::TRUNCATE);
    auto out = qv::makeReference<BufferedWriter>(
        qv::makeReference<OutputStreamWriter>(Channels::newOutputStream(outChannel.get()).get(), u"UTF-16LE").get());
    qv::String line;
    int number = 0;
    while (lines->readLine(line)) {
        std::printf("line %d (%d units): %s\n", ++number, line.getLength(), line.toUtf8().c_str());
        out->write(line);
        out->newLine();
    }
    lines->close();
    out->close();

    auto check = FileChannel::open(target, FileChannel::READ);
    auto head = qv::makeReference<qv::util::RWByteBuffer>();
    check->read(head.get(), 16);
    std::printf("%s: %lld bytes, starting", target.toUtf8().c_str(), static_cast<long long>(check->size()));
    for (int32_t i = 0; i < head->getLength(); ++i)
        std::printf(" %02X", static_cast<unsigned char>(head->getData()[i]));
    std::printf("\n");

    section("A decoding error names its byte offset");
    static const char broken[] = "fine text, then \xC0\x80 an overlong NUL";
    auto bytes = qv::makeReference<ByteArrayInputStream>(broken, static_cast<int32_t>(sizeof(broken) - 1));
    auto reader = qv::makeReference<BufferedReader>(qv::makeReference<InputStreamReader>(bytes.get(), u"UTF-8").get());
    try {
        reader->readLine(line);
    } catch (const qv::text::charset::InvalidCharacterException& e) {
        std::printf("InvalidCharacterException: %s\n", e.getDescription().toUtf8().c_str());
    }

    section("Printing numbers; locking a file");
    auto text = qv::makeReference<StringWriter>();
    auto print = qv::makeReference<PrintWriter>(text.get());
    print->print(u"pi ~ ");
    print->print(3.14159);
    print->print(u", 2^40 = ");
    print->println(1LL << 40);
    std::printf("%s", text->toString().toUtf8().c_str());
    auto first = FileChannel::open(target, FileChannel::READ | FileChannel::WRITE);
    auto second = FileChannel::open(target, FileChannel::READ | FileChannel::WRITE);
    auto held = first->lock(0, 10);
    std::printf("bytes 0-9 locked by one channel; tryLock(5, 10) by another: %s\n",
                second->tryLock(5, 10) ? "got it" : "refused");
    held->release();
    std::printf("after release: %s\n", second->tryLock(5, 10) ? "got it" : "refused");
    std::filesystem::remove(source.toUtf8());
    std::filesystem::remove(target.toUtf8());
}
