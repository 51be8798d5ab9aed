#ifndef QV_LOG_ILOGPROCESSOR_H
#define QV_LOG_ILOGPROCESSOR_H

#include <qv/core/IQVUnknown.h>
#include <qv/log/ILogEntry.h>

namespace qv {
namespace log {

// Receives finished log entries. A processor that keeps an entry beyond the
// call takes its own reference.
class ILogProcessor : public IQVUnknown {
public:
    static constexpr GUID iid = {0x6B1E3C10, 0x4A2D, 0x4F51, {0x9C, 0x61, 0x2E, 0x7A, 0x11, 0x03, 0x5B, 0x06}};

    virtual void process(const ILogEntry* entry) = 0;

protected:
    ~ILogProcessor() = default;
};

namespace qvcom {

// The component-face twin, implemented by foreign components.
class ILogProcessor : public IQVUnknown {
public:
    static constexpr GUID iid = {0x6B1E3C10, 0x4A2D, 0x4F51, {0x9C, 0x61, 0x2E, 0x7A, 0x11, 0x03, 0x5B, 0x07}};

    virtual Result Process(ILogEntry* entry) = 0;

protected:
    ~ILogProcessor() = default;
};

} // namespace qvcom
} // namespace log
} // namespace qv

#endif
