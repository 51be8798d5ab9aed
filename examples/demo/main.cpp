// A tour of what qvcl3 offers so far.
#include <qv/qvcl3.h>

#include <cstdio>

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

} // namespace

int main()
{
    std::printf("qvcl3 %s\n", QVCL3Version());
    try {
        runtimeCore();
    } catch (const qv::Exception& e) {
        std::printf("unexpected exception 0x%08X: %s\n", static_cast<unsigned>(e.getResult()),
                    e.getDescription().toUtf8().c_str());
        return 1;
    }
    return 0;
}
