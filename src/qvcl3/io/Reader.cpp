#include <qv/io/Reader.h>

#include "io/StreamChecks.h"

namespace qv {
namespace io {

Reader::~Reader() = default;

int32_t Reader::read()
{
    char16_t unit = 0;
    return read(&unit, 1) > 0 ? unit : -1;
}

int32_t Reader::skip(int32_t count)
{
    char16_t scratch[256];
    int32_t skipped = 0;
    while (skipped < count) {
        int32_t want = count - skipped < 256 ? count - skipped : 256;
        int32_t n = read(scratch, want);
        if (n < 0)
            break;
        skipped += n;
    }
    return skipped;
}

bool Reader::ready()
{
    return false;
}

void Reader::close() {}

bool Reader::markSupported() const
{
    return false;
}

void Reader::mark(int32_t) {}

void Reader::reset()
{
    detail::throwMarkNotSupported();
}

} // namespace io
} // namespace qv
