#include <qv/io/PrintWriter.h>

#include <qv/lang/String.h>

#include "io/StreamChecks.h"

namespace qv {
namespace io {

PrintWriter::PrintWriter(Writer* out, bool autoFlush) : m_out(out), m_autoFlush(autoFlush)
{
    detail::requireArgument(out != nullptr);
}

PrintWriter::~PrintWriter() = default;

void PrintWriter::ensureOpen() const
{
    if (!m_out)
        detail::throwStreamClosed();
}

void PrintWriter::write(const char16_t* text, int32_t count)
{
    ensureOpen();
    m_out->write(text, count);
}

void PrintWriter::write(const String& text)
{
    ensureOpen();
    m_out->write(text);
}

void PrintWriter::write(char16_t unit)
{
    ensureOpen();
    m_out->write(unit);
}

void PrintWriter::flush()
{
    ensureOpen();
    m_out->flush();
}

void PrintWriter::close()
{
    detail::closeWrapped(m_out, [] {});
}

void PrintWriter::print(const String& text)
{
    write(text);
}

void PrintWriter::print(const char16_t* text)
{
    write(text, -1);
}

void PrintWriter::print(const Object& object)
{
    write(object.toString());
}

void PrintWriter::print(bool value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(char16_t value)
{
    write(value);
}

void PrintWriter::print(int value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(unsigned int value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(long value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(unsigned long value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(long long value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(unsigned long long value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(float value)
{
    write(String::valueOf(value));
}

void PrintWriter::print(double value)
{
    write(String::valueOf(value));
}

void PrintWriter::println()
{
    write(u'\n');
    if (m_autoFlush)
        m_out->flush();
}

} // namespace io
} // namespace qv
