#ifndef QV_LOG_LEVELFILTERPROCESSOR_H
#define QV_LOG_LEVELFILTERPROCESSOR_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/log/ILogProcessor.h>

#include <cstdint>

namespace qv {
namespace log {

// Passes on to its target the entries whose "level" field is an integer of
// at least minLevel; entries without a numeric "level" are passed on, so
// that nothing is dropped for lack of a level. Loggers never filter by
// level; this is the place to do it. No lock of its own.
class QV_EXPORT LevelFilterProcessor : public Object, public ILogProcessor {
    QV_DECLARE_INTERFACE_MAP()

public:
    // ResultException 0x80070057 for a null target.
    LevelFilterProcessor(int32_t minLevel, ILogProcessor* target);
    ~LevelFilterProcessor() override;
    LevelFilterProcessor(const LevelFilterProcessor&) = delete;
    LevelFilterProcessor& operator=(const LevelFilterProcessor&) = delete;

    static Reference<ILogProcessor> create(int32_t minLevel, ILogProcessor* target);

    int32_t getMinLevel() const noexcept { return m_minLevel; }
    void process(const ILogEntry* entry) override;

private:
    int32_t m_minLevel;
    Reference<ILogProcessor> m_target;
};

} // namespace log
} // namespace qv

#endif
