#ifndef QV_I18N_LOCALEFORMAT_H
#define QV_I18N_LOCALEFORMAT_H

#include <qv/core/Object.h>
#include <qv/lang/String.h>

#include <cstdint>
#include <string>

namespace qv {
namespace i18n {

class Locale;

// Numbers, dates and times as a locale writes them, from the C library's
// locale data. Never switches the process locale, so any number of threads
// may format at once, each in its own locale.
class QV_EXPORT LocaleFormat : public Object {
public:
    // The "C" locale.
    LocaleFormat();
    // A name as the C library knows it ("de_DE.UTF-8", "de_DE", "C"); a bare
    // name prefers the locale's UTF-8 form. A locale that is not installed
    // formats as "C" does and isInstalled() says so.
    explicit LocaleFormat(const String& name);
    explicit LocaleFormat(const Locale& locale);
    LocaleFormat(const LocaleFormat& other);
    LocaleFormat& operator=(const LocaleFormat& other);
    ~LocaleFormat() override;

    String getName() const;
    bool isInstalled() const;
    String getDecimalPoint() const;
    // Empty when the locale does not group digits.
    String getThousandsSeparator() const;

    // With the locale's grouping: "1.234.567" in de_DE, "1,234,567" in en_US.
    String formatInteger(int64_t value) const;
    // decimals digits after the decimal point (0 to 17), rounded; NaN and
    // the infinities as "NaN", "Infinity", "-Infinity".
    String formatNumber(double value, int32_t decimals) const;

    // seconds since 1970-01-01 UTC, shown in UTC or in the local time zone.
    // The short date is the locale's %x ("24.11.2026", "11/24/2026"); the
    // long one spells out the weekday and month in the locale's order.
    String formatDate(int64_t seconds, bool longForm, bool utc = false) const;
    // The locale's %X ("05:40:00", "05:40:00 AM").
    String formatTime(int64_t seconds, bool utc = false) const;
    // The locale's %c.
    String formatDateTime(int64_t seconds, bool utc = false) const;

private:
    void load(const String& name);
    String format(const char* pattern, int64_t seconds, bool utc) const;

    String m_name;
    bool m_installed;
    String m_decimalPoint;
    String m_thousandsSeparator;
    std::string m_grouping;
    std::string m_longDatePattern;
};

} // namespace i18n
} // namespace qv

#endif
