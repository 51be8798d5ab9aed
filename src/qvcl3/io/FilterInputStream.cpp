#include <qv/io/FilterInputStream.h>

#include <qv/core/Exception.h>

namespace qv {
namespace io {

FilterInputStream::FilterInputStream(InputStream* in) : m_in(in)
{
    if (!in)
        throw ResultException(results::INVALIDARG);
}

FilterInputStream::~FilterInputStream() = default;

int32_t FilterInputStream::read(signed char* buffer, int32_t count)
{
    return m_in->read(buffer, count);
}

int FilterInputStream::read()
{
    return m_in->read();
}

int32_t FilterInputStream::skip(int32_t count)
{
    return m_in->skip(count);
}

int32_t FilterInputStream::available()
{
    return m_in->available();
}

void FilterInputStream::close()
{
    m_in->close();
}

bool FilterInputStream::markSupported()
{
    return m_in->markSupported();
}

void FilterInputStream::mark(int32_t readLimit)
{
    m_in->mark(readLimit);
}

void FilterInputStream::reset()
{
    m_in->reset();
}

} // namespace io
} // namespace qv
