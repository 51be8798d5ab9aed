#ifndef QV_LOG_ILOGGER_H
#define QV_LOG_ILOGGER_H

#include <qv/core/IQVUnknown.h>
#include <qv/lang/String.h>

namespace qv {
namespace log {

// Logs a text at the logger's default level.
class ILogger : public IQVUnknown {
public:
    static constexpr GUID iid = {0x6B1E3C10, 0x4A2D, 0x4F51, {0x9C, 0x61, 0x2E, 0x7A, 0x11, 0x03, 0x5B, 0x01}};

    virtual void log(const String& text) = 0;

protected:
    ~ILogger() = default;
};

// Logs a text at a level: a plain signed integer, never filtered by the
// logger.
class ILevelLogger : public IQVUnknown {
public:
    static constexpr GUID iid = {0x6B1E3C10, 0x4A2D, 0x4F51, {0x9C, 0x61, 0x2E, 0x7A, 0x11, 0x03, 0x5B, 0x02}};

    virtual void log(int level, const String& text) = 0;

protected:
    ~ILevelLogger() = default;
};

} // namespace log
} // namespace qv

#endif
