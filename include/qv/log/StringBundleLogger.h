#ifndef QV_LOG_STRINGBUNDLELOGGER_H
#define QV_LOG_STRINGBUNDLELOGGER_H

#include <qv/collections/List.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/i18n/StringBundle.h>
#include <qv/log/ILogger.h>

namespace qv {
namespace log {

// Logs texts taken from a string bundle by key, with numbered arguments
// "{0}", "{1}", ... filled in. Whatever the bundle throws for a missing key
// (MissingResourceException) passes through.
class QV_EXPORT StringBundleLogger : public Object, public ILevelLogger {
    QV_DECLARE_INTERFACE_MAP()

public:
    // ResultException 0x80070057 for a null bundle or target.
    StringBundleLogger(const i18n::StringBundle* bundle, ILevelLogger* target);
    ~StringBundleLogger() override;
    StringBundleLogger(const StringBundleLogger&) = delete;
    StringBundleLogger& operator=(const StringBundleLogger&) = delete;

    static Reference<StringBundleLogger> create(const i18n::StringBundle* bundle, ILevelLogger* target);

    // Logs the bundle's text for key.
    void log(int level, const String& key) override;
    // Logs the bundle's text for key with the arguments filled in (see
    // fillArguments).
    virtual void log(int level, const String& key, const collections::List<Object>& args);

    // Replaces "{k}" by args[k].toString() for k = 0, 1, ... up to the first
    // number that does not occur in text. When a number that occurs has no
    // argument, text is returned unchanged. Inserted text is never searched
    // again, so markers inside arguments stay as they are. A null argument
    // is inserted as empty text.
    static String fillArguments(const String& text, const collections::List<Object>& args);

private:
    Reference<const i18n::StringBundle> m_bundle;
    Reference<ILevelLogger> m_target;
};

} // namespace log
} // namespace qv

#endif
