// URI parsing: no input crashes; whatever parses recomposes to text that
// parses to the same text again; normalisation is idempotent; resolution
// against a fixed base gives a URI that reads back.

#include <qv/qvcl3.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

void check(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "contract broken: %s\n", what);
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    qv::net::URI uri;
    try {
        uri = qv::net::URI(text);
    } catch (const qv::net::URISyntaxException& e) {
        check(e.getIndex() >= 0 && static_cast<size_t>(e.getIndex()) <= size, "error index outside the input");
        return 0;
    }
    const std::string once = uri.toStdString();
    const qv::net::URI again(once);
    check(again.toStdString() == once, "recomposed text does not read back to itself");

    const qv::net::URI normal = uri.normalize();
    check(normal.normalize() == normal, "normalisation is not idempotent");
    check(qv::net::URI(normal.toStdString()).normalize() == normal, "normalised text does not read back");

    static const qv::net::URI base("http://a/b/c/d;p?q");
    const qv::net::URI target = base.resolve(uri);
    check(qv::net::URI(target.toStdString()).toStdString() == target.toStdString(), "resolved text does not read back");
    (void)uri.getPath();
    (void)uri.getQuery();
    return 0;
}
