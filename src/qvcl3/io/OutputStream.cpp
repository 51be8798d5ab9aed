#include <qv/io/OutputStream.h>

namespace qv {
namespace io {

OutputStream::~OutputStream() = default;

void OutputStream::write(const char* buffer, int32_t count)
{
    write(reinterpret_cast<const signed char*>(buffer), count);
}

void OutputStream::write(const unsigned char* buffer, int32_t count)
{
    write(reinterpret_cast<const signed char*>(buffer), count);
}

void OutputStream::write(signed char byte)
{
    write(&byte, 1);
}

void OutputStream::flush() {}

void OutputStream::close() {}

} // namespace io
} // namespace qv
