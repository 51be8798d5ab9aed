#ifndef QV_LOG_BASICLOGWRITER_H
#define QV_LOG_BASICLOGWRITER_H

#include <qv/log/AbstractLogWriter.h>

namespace qv {
namespace log {

// One line "name=value" per field in the entry's order, then a line of 25
// hyphens.
class QV_EXPORT BasicLogWriter : public AbstractLogWriter {
public:
    explicit BasicLogWriter(io::Writer* writer);
    ~BasicLogWriter() noexcept(false) override;

    static Reference<ILogProcessor> create(io::Writer* writer);

protected:
    String format(const ILogEntry* entry) override;
    void appendEntry(const ILogEntry* entry, std::u16string& text) override;

private:
    static void appendLines(const ILogEntry* entry, std::u16string& text);
};

} // namespace log
} // namespace qv

#endif
