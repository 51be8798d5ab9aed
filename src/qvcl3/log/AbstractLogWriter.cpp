#include <qv/log/AbstractLogWriter.h>

#include <qv/core/Exception.h>

namespace qv {
namespace log {

QV_BEGIN_INTERFACE_MAP(AbstractLogWriter)
QV_INTERFACE_ENTRY(AbstractLogWriter, ILogProcessor)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

AbstractLogWriter::AbstractLogWriter(io::Writer* writer) : m_writer(writer)
{
    if (!writer)
        throw ResultException(results::INVALIDARG);
}

AbstractLogWriter::~AbstractLogWriter() noexcept(false) = default;

void AbstractLogWriter::process(const ILogEntry* entry)
{
    const String text = format(entry);
    m_writer->write(text);
    flush();
}

void AbstractLogWriter::flush()
{
    m_writer->flush();
}

} // namespace log
} // namespace qv
