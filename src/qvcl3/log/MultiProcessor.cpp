#include <qv/log/MultiProcessor.h>

#include "LockHolder.h"

namespace qv {
namespace log {

QV_BEGIN_INTERFACE_MAP(MultiProcessor)
QV_INTERFACE_ENTRY(MultiProcessor, ILogProcessor)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

MultiProcessor::MultiProcessor() = default;

MultiProcessor::~MultiProcessor() = default;

Reference<MultiProcessor> MultiProcessor::create()
{
    return Reference<MultiProcessor>(new MultiProcessor());
}

void MultiProcessor::addProcessor(ILogProcessor* processor)
{
    if (!processor)
        return;
    LockHolder hold(m_lock);
    m_processors.emplace_back(processor);
}

void MultiProcessor::process(const ILogEntry* entry)
{
    LockHolder hold(m_lock);
    for (const Reference<ILogProcessor>& processor : m_processors)
        processor->process(entry);
}

} // namespace log
} // namespace qv
