#include <qv/io/InputStream.h>

#include <qv/io/IoException.h>

namespace qv {
namespace io {

InputStream::~InputStream() = default;

int32_t InputStream::read(char* buffer, int32_t count)
{
    return read(reinterpret_cast<signed char*>(buffer), count);
}

int32_t InputStream::read(unsigned char* buffer, int32_t count)
{
    return read(reinterpret_cast<signed char*>(buffer), count);
}

int InputStream::read()
{
    signed char byte = 0;
    if (read(&byte, 1) <= 0)
        return -1;
    return static_cast<unsigned char>(byte);
}

int32_t InputStream::skip(int32_t count)
{
    if (count <= 0)
        return 0;
    signed char scratch[256];
    int32_t skipped = 0;
    while (skipped < count) {
        const int32_t wanted = count - skipped < 256 ? count - skipped : 256;
        const int32_t n = read(scratch, wanted);
        if (n < 0)
            break;
        skipped += n;
    }
    return skipped;
}

int32_t InputStream::available()
{
    return 0;
}

void InputStream::close() {}

bool InputStream::markSupported()
{
    return false;
}

void InputStream::mark(int32_t) {}

void InputStream::reset()
{
    throw IoException(u"mark/reset not supported");
}

} // namespace io
} // namespace qv
