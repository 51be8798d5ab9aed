// A tour of what qvcl3 offers so far.
#include <qv/qvcl3.h>

#include <cstdio>
#include <vector>

namespace {

void section(const char* title)
{
    std::printf("\n== %s\n", title);
}

std::string utf8(const char16_t* text)
{
    return qv::String(text).toUtf8();
}

void runtimeCore()
{
    section("Classes by name");
    const qv::Class* cls = qv::Class::forName(u"qv::io::TimeoutException");
    qv::Reference<qv::Object> made(cls->createInstance());
    std::printf("created %s -> %s\n", utf8(cls->getName()).c_str(), made->toString().toUtf8().c_str());
    try {
        qv::Class::forName(u"qv::NoSuchThing");
    } catch (const qv::ClassNotFoundException& e) {
        std::printf("unknown class: ClassNotFoundException(\"%s\"), code 0x%08X\n",
                    e.getDescription().toUtf8().c_str(), static_cast<unsigned>(e.getResult()));
    }

    section("Exceptions become result codes at component boundaries");
    qv::Result r = qv::qvcom::guardBoundary([] { throw qv::ResultException(static_cast<qv::Result>(0x80070057u)); });
    std::printf("ResultException(E_INVALIDARG) -> 0x%08X\n", static_cast<unsigned>(r));
    r = qv::qvcom::guardBoundary([] { throw qv::OutOfMemoryException(); });
    std::printf("OutOfMemoryException         -> 0x%08X\n", static_cast<unsigned>(r));

    section("Socket error codes");
    for (int native : {10035, 10061, 13001}) {
        ENUM_QV_E_SOCKET code = QV_E_SOCKETFromNativeEaiSocketError(native);
        std::printf("%5d -> 0x%08X \"%s\"\n", native, static_cast<unsigned>(code),
                    utf8(QVGetDescriptionFromQV_E_SOCKET(code)).c_str());
    }

    section("Synchronisation");
    qv::sync::Event event;
    std::printf("event.wait(0) before signal: %s\n", event.wait(0ul) ? "signalled" : "timed out");
    event.signal();
    std::printf("event.wait(0) after signal:  %s\n", event.wait(0ul) ? "signalled" : "timed out");
}

void strings()
{
    section("Strings: copy-on-write UTF-16");
    qv::String greeting(u"  Grüße, Ελλάδα, Привет  ");
    qv::String copy(greeting);
    copy.trim().toUpper();
    std::printf("original: [%s]\ntrimmed and upper-cased copy: [%s]\n", greeting.toUtf8().c_str(),
                copy.toUtf8().c_str());
    std::printf("indexOf(\"привет\", ignoring case) = %d, hashCode = 0x%08X\n",
                copy.indexOf(u"привет", 0, true), copy.hashCode());

    section("Formatting and valueOf");
    qv::String line;
    line.format(u"{0} owes {1} {2}; {0} pays {3}", -1, u"Ann", qv::String::valueOf(12.5).getData(), u"EUR",
                qv::String::valueOf(true).getData());
    std::printf("%s\n", line.toUtf8().c_str());
    std::printf("valueOf(1.0/3) = %s, valueOf(-9223372036854775807LL - 1) = %s\n",
                qv::String::valueOf(1.0 / 3).toUtf8().c_str(),
                qv::String::valueOf(static_cast<long long>(-9223372036854775807LL - 1)).toUtf8().c_str());
}

void encodings()
{
    section("Narrow text in several encodings");
    qv::String text(u"Café €5 & Ωmega");
    std::printf("text: %s\n", text.toUtf8().c_str());
    for (const char16_t* encoding : {u"UTF-8", u"ISO8859_1", u"CP1252", u"UTF-16BE", u"AMP-7"}) {
        qv::util::RWByteBuffer bytes;
        text.getBytes(&bytes, encoding);
        std::printf("%-10s", utf8(encoding).c_str());
        for (int32_t i = 0; i < bytes.GetLength(); ++i)
            std::printf(" %02X", static_cast<unsigned char>(bytes.GetData()[i]));
        qv::String back(bytes.GetData(), bytes.GetLength(), encoding);
        std::printf("\n%10s -> %s\n", "", back.toUtf8().c_str());
    }
    std::printf("AMP-7 as text: %s\n", text.getBytes(u"amp-7"));
    try {
        text.getBytes(u"UTF-16");
    } catch (const qv::text::charset::UnknownEncodingException& e) {
        std::printf("unknown encoding: UnknownEncodingException(\"%s\")\n", e.getDescription().toUtf8().c_str());
    }

    section("Known encodings (QVEnumerateEncInfo)");
    uint32_t count = 0;
    QVEnumerateEncInfo(&count, nullptr);
    std::vector<EncInfo> records(count);
    if (QVEnumerateEncInfo(&count, records.data()) == 0) {
        for (const EncInfo& info : records)
            std::printf("%-10s %5u\n", utf8(info.name).c_str(), static_cast<unsigned>(info.codePage));
    }
}

} // namespace

int main()
{
    std::printf("qvcl3 %s\n", QVCL3Version());
    try {
        runtimeCore();
        strings();
        encodings();
    } catch (const qv::Exception& e) {
        std::printf("unexpected exception 0x%08X: %s\n", static_cast<unsigned>(e.getResult()),
                    e.getDescription().toUtf8().c_str());
        return 1;
    }
    return 0;
}
