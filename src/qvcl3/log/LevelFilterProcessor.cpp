#include <qv/log/LevelFilterProcessor.h>

#include <qv/core/Exception.h>
#include <qv/lang/Integer32.h>

namespace qv {
namespace log {

QV_BEGIN_INTERFACE_MAP(LevelFilterProcessor)
QV_INTERFACE_ENTRY(LevelFilterProcessor, ILogProcessor)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

LevelFilterProcessor::LevelFilterProcessor(int32_t minLevel, ILogProcessor* target)
    : m_minLevel(minLevel), m_target(target)
{
    if (!target)
        throw ResultException(results::INVALIDARG);
}

LevelFilterProcessor::~LevelFilterProcessor() = default;

Reference<ILogProcessor> LevelFilterProcessor::create(int32_t minLevel, ILogProcessor* target)
{
    return Reference<ILogProcessor>(static_cast<ILogProcessor*>(new LevelFilterProcessor(minLevel, target)));
}

void LevelFilterProcessor::process(const ILogEntry* entry)
{
    if (!entry)
        throw ResultException(results::POINTER);
    static const String levelKey(u"level");
    const Reference<const Object> level = entry->getField(levelKey);
    if (const Integer32* value = dynamic_cast<const Integer32*>(level.get())) {
        if (value->getValue() < m_minLevel)
            return;
    }
    m_target->process(entry);
}

} // namespace log
} // namespace qv
