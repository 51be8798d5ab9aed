// A tour of what qvcl3 offers so far.
#include "Demo.h"

#include <cstdio>
#include <vector>

void section(const char* title)
{
    std::printf("\n== %s\n", title);
}

std::string utf8(const char16_t* text)
{
    return qv::String(text).toUtf8();
}

namespace {

void runtimeCore()
{
    section("Classes by name");
    const qv::Class* cls = qv::Class::forName(u"qv::io::TimeoutException");
    qv::Reference<qv::Object> made(cls->createInstance());
    std::printf("created %s -> %s\n", utf8(cls->getName()).c_str(), made->toString().toUtf8().c_str());
    try {
        qv::Class::forName(u"qv::NoSuchThing");
    } catch (const qv::ClassNotFoundException& e) {
        std::printf("unknown class: ClassNotFoundException(\"%s\"), code 0x%08X\n", e.getDescription().toUtf8().c_str(),
                    static_cast<unsigned>(e.getResult()));
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
    std::printf("indexOf(\"привет\", ignoring case) = %d, hashCode = 0x%08X\n", copy.indexOf(u"привет", 0, true),
                copy.hashCode());

    section("Formatting and valueOf");
    qv::String line;
    line.format(u"{0} owes {1} {2}; {0} pays {3}", -1, u"Ann", qv::String::valueOf(12.5).getData(), u"EUR",
                qv::String::valueOf(true).getData());
    std::printf("%s\n", line.toUtf8().c_str());
    std::printf("valueOf(1.0/3) = %s, valueOf(-9223372036854775807LL - 1) = %s\n",
                qv::String::valueOf(1.0 / 3).toUtf8().c_str(),
                qv::String::valueOf(static_cast<long long>(-9223372036854775807LL - 1)).toUtf8().c_str());
}

void numbers()
{
    section("Boxed numbers");
    qv::Integer32 big(2147483647), minusOne(-1);
    qv::Integer8 low(-128), high(127);
    std::printf("Integer32(2147483647).compareTo(Integer32(-1)) = %d (the 32-bit difference wraps, kept)\n",
                big.compareTo(minusOne));
    std::printf("Integer8(-128).compareTo(Integer8(127)) = %d\n", low.compareTo(high));
    std::printf("Integer32(5).equals(Double(5.9)) = %s; Double(2.7).hashCode() = %u\n",
                qv::Integer32(5).equals(qv::Double(5.9)) ? "true" : "false", qv::Double(2.7).hashCode());
    std::printf("parseInt32(\"abc\") = %d, UInteger64(2^64-1) in hex = %s\n", qv::Number::parseInt32(u"abc"),
                qv::UInteger64(UINT64_MAX).toString(16).toUtf8().c_str());

    section("Arbitrary precision");
    qv::math::BigInteger factorial(1);
    for (int i = 2; i <= 50; ++i)
        factorial = factorial.multiply(qv::math::BigInteger(i));
    std::printf("50!      = %s\n50! hex  = %s\n", factorial.toString().toUtf8().c_str(),
                factorial.toString(16).toUtf8().c_str());
    qv::math::BigInteger two(2);
    std::printf("2^200    = %s\n", two.pow(200).toString().toUtf8().c_str());
    qv::math::BigDecimal price(qv::String(u"19.99")),
        third = qv::math::BigDecimal(1).divide(qv::math::BigDecimal(3), 10, qv::math::BigDecimal::ROUND_HALF_EVEN);
    std::printf("19.99 * 3 = %s, 1/3 to 10 places = %s\n",
                price.multiply(qv::math::BigDecimal(3)).toString().toUtf8().c_str(), third.toString().toUtf8().c_str());

    section("A map of strings to numbers, in the library's iteration order");
    qv::collections::StringHashMap prices;
    const char16_t* names[] = {u"apple", u"pear", u"plum", u"fig", u"kiwi"};
    int32_t cents = 120;
    for (const char16_t* name : names) {
        qv::Reference<qv::Integer32> value(new qv::Integer32(cents));
        prices.put(qv::String(name), value->GetUnknown());
        cents += 35;
    }
    for (auto it = prices.createIterator(); it.hasNext();) {
        const auto& entry = it.next();
        qv::Reference<qv::Number> value = entry.getValue().cast<qv::Number>();
        std::printf("  %-6s %s\n", entry.getKey().toUtf8().c_str(), value->toString().toUtf8().c_str());
    }
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

void demoRuntimeCore()
{
    runtimeCore();
}

void demoStrings()
{
    strings();
}

void demoNumbers()
{
    numbers();
}

void demoEncodings()
{
    encodings();
}

int main(int argc, char** argv)
{
    std::printf("qvcl3 %s\n", QVCL3Version());
    try {
        demoRuntimeCore();
        demoStrings();
        demoNumbers();
        demoEncodings();
        demoCollections();
        demoIo();
        demoTextIo();
        demoExec();
        demoCrypto();
        demoNet();
        demoModules();
        demoConfiguration(argc, argv);
        demoI18n();
        demoLog();
    } catch (const qv::Exception& e) {
        std::printf("unexpected exception 0x%08X: %s\n", static_cast<unsigned>(e.getResult()),
                    e.getDescription().toUtf8().c_str());
        return 1;
    }
    return 0;
}
