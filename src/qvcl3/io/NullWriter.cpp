#include <qv/io/NullWriter.h>

#include "io/StreamChecks.h"

namespace qv {
namespace io {

NullWriter::~NullWriter() = default;

void NullWriter::write(const char16_t* text, int32_t count)
{
    if (m_closed)
        detail::throwStreamClosed();
    measure(text, count);
}

void NullWriter::write(const String&)
{
    if (m_closed)
        detail::throwStreamClosed();
}

void NullWriter::write(char16_t)
{
    if (m_closed)
        detail::throwStreamClosed();
}

void NullWriter::flush()
{
    if (m_closed)
        detail::throwStreamClosed();
}

void NullWriter::close()
{
    m_closed = true;
}

} // namespace io
} // namespace qv
