#include <qv/io/FilterOutputStream.h>

#include <qv/core/Exception.h>

namespace qv {
namespace io {

FilterOutputStream::FilterOutputStream(OutputStream* out) : m_out(out)
{
    if (!out)
        throw ResultException(results::INVALIDARG);
}

FilterOutputStream::~FilterOutputStream() = default;

void FilterOutputStream::write(const signed char* buffer, int32_t count)
{
    m_out->write(buffer, count);
}

void FilterOutputStream::write(signed char byte)
{
    m_out->write(byte);
}

void FilterOutputStream::flush()
{
    m_out->flush();
}

void FilterOutputStream::close()
{
    m_out->close();
}

} // namespace io
} // namespace qv
