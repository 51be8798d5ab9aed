#ifndef QV_LOG_MULTIPROCESSOR_H
#define QV_LOG_MULTIPROCESSOR_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/log/ILogProcessor.h>
#include <qv/sync/Mutex.h>

#include <vector>

namespace qv {
namespace log {

// Fans every entry out to its processors in the order they were added, under
// one lock held for the whole walk: callers are serialised and every
// processor sees the entries in the same order. A processor that throws
// stops the walk; the ones after it miss that entry.
class QV_EXPORT MultiProcessor : public Object, public ILogProcessor {
    QV_DECLARE_INTERFACE_MAP()

public:
    MultiProcessor();
    ~MultiProcessor() override;
    MultiProcessor(const MultiProcessor&) = delete;
    MultiProcessor& operator=(const MultiProcessor&) = delete;

    static Reference<MultiProcessor> create();

    // Appends, taking a reference; a null processor is ignored.
    void addProcessor(ILogProcessor* processor);
    void process(const ILogEntry* entry) override;

private:
    std::vector<Reference<ILogProcessor>> m_processors;
    sync::Mutex m_lock;
};

} // namespace log
} // namespace qv

#endif
