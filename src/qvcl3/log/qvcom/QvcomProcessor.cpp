#include <qv/log/qvcom/QvcomProcessor.h>

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>

namespace qv {
namespace log {
namespace qvcom {

QV_BEGIN_INTERFACE_MAP(QvcomProcessor)
QV_INTERFACE_ENTRY(QvcomProcessor, log::ILogProcessor)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

QvcomProcessor::QvcomProcessor(::qv::log::qvcom::ILogProcessor* processor) : m_processor(processor)
{
    if (!processor)
        throw ResultException(results::INVALIDARG);
}

QvcomProcessor::~QvcomProcessor() = default;

Reference<log::ILogProcessor> QvcomProcessor::create(::qv::log::qvcom::ILogProcessor* processor)
{
    return Reference<log::ILogProcessor>(static_cast<log::ILogProcessor*>(new QvcomProcessor(processor)));
}

void QvcomProcessor::process(const log::ILogEntry* entry)
{
    if (!entry)
        throw ResultException(results::POINTER);
    void* face = nullptr;
    const Result found = const_cast<log::ILogEntry*>(entry)->QueryInterface(::qv::log::qvcom::ILogEntry::iid, &face);
    if (found < 0 || !face)
        throw ResultException(results::NOINTERFACE);
    Reference<::qv::log::qvcom::ILogEntry> component;
    component.attach(static_cast<::qv::log::qvcom::ILogEntry*>(face));
    const Result code = m_processor->Process(component.get());
    if (code < 0)
        throw ResultException(code);
}

} // namespace qvcom
} // namespace log
} // namespace qv
