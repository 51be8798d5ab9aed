#include <qv/io/NullOutputStream.h>

#include "io/StreamSupport.h"

namespace qv {
namespace io {

NullOutputStream::NullOutputStream() noexcept = default;

NullOutputStream::~NullOutputStream() = default;

void NullOutputStream::write(const signed char* buffer, int32_t count)
{
    detail::hasBytes(buffer, count);
}

void NullOutputStream::write(signed char) {}

} // namespace io
} // namespace qv
