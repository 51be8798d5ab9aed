#ifndef QV_LOG_QVCOM_QVCOMPROCESSOR_H
#define QV_LOG_QVCOM_QVCOMPROCESSOR_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/log/ILogProcessor.h>

namespace qv {
namespace log {
namespace qvcom {

// Hands entries to a processor written against the component interfaces.
// process() throws ResultException 0x80004002 when the entry has no
// component face, and the processor's code when Process fails.
class QV_EXPORT QvcomProcessor : public Object, public log::ILogProcessor {
    QV_DECLARE_INTERFACE_MAP()

public:
    // ResultException 0x80070057 for a null processor.
    explicit QvcomProcessor(::qv::log::qvcom::ILogProcessor* processor);
    ~QvcomProcessor() override;
    QvcomProcessor(const QvcomProcessor&) = delete;
    QvcomProcessor& operator=(const QvcomProcessor&) = delete;

    static Reference<log::ILogProcessor> create(::qv::log::qvcom::ILogProcessor* processor);

    void process(const log::ILogEntry* entry) override;

private:
    Reference<::qv::log::qvcom::ILogProcessor> m_processor;
};

} // namespace qvcom
} // namespace log
} // namespace qv

#endif
