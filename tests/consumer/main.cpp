// Built against the installed package only: the umbrella header and the
// exported target must be enough for a client.
#include <qv/qvcl3.h>

#include <cstdio>
#include <cstring>

int main()
{
    qv::String text;
    text.format(u"{0} + {1}", -1, u"qvcl3", u"consumer");
    qv::Result code = qv::qvcom::guardBoundary([] { throw qv::io::TimeoutException(u"late"); });
    const qv::Class* cls = qv::Class::forName(u"qv::Exception");
    std::printf("consumer linked qvcl3 %s: %s, 0x%08X, %s\n", QVCL3Version(), text.toUtf8().c_str(),
                static_cast<unsigned>(code), qv::String(cls->getName()).toUtf8().c_str());
    bool ok = std::strcmp(QVCL3Version(), "3.0.0") == 0 && text.equals(u"qvcl3 + consumer") &&
              code == static_cast<qv::Result>(0x80004005u);
    return ok ? 0 : 1;
}
