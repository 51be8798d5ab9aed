#include <qv/i18n/LocaleFormat.h>

#include <qv/core/Exception.h>
#include <qv/i18n/Locale.h>

#include <qvcore3/qvcore3.h>

#include <charconv>
#include <cmath>
#include <string>

namespace qv {
namespace i18n {

namespace {

String fromUtf8(const char* text, size_t size)
{
    return String(text, static_cast<int32_t>(size), u"UTF-8");
}

// Inserts separator into the digits from the right as grouping says: each
// byte a group size, the last repeated, 0 or CHAR_MAX ending the grouping.
std::string group(const std::string& digits, const std::string& grouping, const std::string& separator)
{
    if (separator.empty() || grouping.empty())
        return digits;
    std::string result;
    size_t remaining = digits.size();
    size_t index = 0;
    int size = static_cast<unsigned char>(grouping[0]);
    std::string tail;
    while (size > 0 && size < 127 && remaining > static_cast<size_t>(size)) {
        tail = separator + digits.substr(remaining - static_cast<size_t>(size), static_cast<size_t>(size)) + tail;
        remaining -= static_cast<size_t>(size);
        if (index + 1 < grouping.size())
            size = static_cast<unsigned char>(grouping[++index]);
    }
    return digits.substr(0, remaining) + tail;
}

} // namespace

LocaleFormat::LocaleFormat()
{
    load(u"C");
}

LocaleFormat::LocaleFormat(const String& name)
{
    load(name);
}

LocaleFormat::LocaleFormat(const Locale& locale)
{
    load(locale.isRoot() ? String(u"C") : locale.toString());
}

LocaleFormat::LocaleFormat(const LocaleFormat& other) = default;

LocaleFormat& LocaleFormat::operator=(const LocaleFormat& other) = default;

LocaleFormat::~LocaleFormat() = default;

void LocaleFormat::load(const String& name)
{
    std::string narrow = name.toUtf8();
    STRUCT_QV_NUMERIC_FORMAT numeric{};
    Result result = QVGetLocaleNumericFormat(narrow.c_str(), &numeric);
    m_installed = succeeded(result);
    if (!m_installed) {
        narrow = "C";
        result = QVGetLocaleNumericFormat("C", &numeric);
        if (failed(result))
            throw ResultException(result);
    }
    m_name = name;
    m_decimalPoint = String(numeric.decimalPoint, -1, u"UTF-8");
    m_thousandsSeparator = String(numeric.thousandsSeparator, -1, u"UTF-8");
    m_grouping = numeric.grouping;

    // The C library has no long date form; the short one tells the order in
    // which the locale writes day, month and year.
    char pattern[128];
    int32_t length = 0;
    result = QVGetLocaleTimeFormat(narrow.c_str(), QV_LOCALE_DATE_FORMAT, pattern, sizeof pattern, &length);
    const std::string shortPattern = succeeded(result) ? std::string(pattern, static_cast<size_t>(length)) : "";
    if (shortPattern.rfind("%m", 0) == 0)
        m_longDatePattern = "%A, %B %-d, %Y";
    else if (shortPattern.find('.') != std::string::npos)
        m_longDatePattern = "%A, %-d. %B %Y";
    else if (shortPattern.rfind("%Y", 0) == 0)
        m_longDatePattern = "%Y %B %-d, %A";
    else
        m_longDatePattern = "%A, %-d %B %Y";
}

String LocaleFormat::getName() const
{
    return m_name;
}

bool LocaleFormat::isInstalled() const
{
    return m_installed;
}

String LocaleFormat::getDecimalPoint() const
{
    return m_decimalPoint;
}

String LocaleFormat::getThousandsSeparator() const
{
    return m_thousandsSeparator;
}

String LocaleFormat::formatInteger(int64_t value) const
{
    // The magnitude as unsigned, so that INT64_MIN has one too.
    const uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
    const std::string digits = std::to_string(magnitude);
    String result(value < 0 ? u"-" : u"");
    const std::string grouped = group(digits, m_grouping, m_thousandsSeparator.toUtf8());
    return result.append(fromUtf8(grouped.data(), grouped.size()));
}

String LocaleFormat::formatNumber(double value, int32_t decimals) const
{
    if (decimals < 0 || decimals > 17)
        throw RangeErrorException(u"decimals must be from 0 to 17");
    if (std::isnan(value))
        return String(u"NaN");
    if (std::isinf(value))
        return String(value < 0 ? u"-Infinity" : u"Infinity");
    // to_chars, unlike printf, ignores the process locale.
    char buffer[400];
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, decimals);
    if (written.ec != std::errc())
        throw RangeErrorException(u"number too long to format");
    std::string text(buffer, written.ptr);
    std::string sign;
    if (!text.empty() && text[0] == '-') {
        sign = "-";
        text.erase(0, 1);
    }
    const size_t point = text.find('.');
    std::string integer = text.substr(0, point);
    std::string result = sign + group(integer, m_grouping, m_thousandsSeparator.toUtf8());
    if (point != std::string::npos)
        result += m_decimalPoint.toUtf8() + text.substr(point + 1);
    return fromUtf8(result.data(), result.size());
}

String LocaleFormat::format(const char* pattern, int64_t seconds, bool utc) const
{
    const std::string name = m_installed ? m_name.toUtf8() : std::string("C");
    char text[512];
    int32_t length = 0;
    const Result result = QVFormatTimeLocale(name.c_str(), pattern, seconds, utc ? 1 : 0, text, sizeof text, &length);
    if (failed(result))
        throw ResultException(result, u"cannot format the time");
    return fromUtf8(text, static_cast<size_t>(length));
}

String LocaleFormat::formatDate(int64_t seconds, bool longForm, bool utc) const
{
    return format(longForm ? m_longDatePattern.c_str() : "%x", seconds, utc);
}

String LocaleFormat::formatTime(int64_t seconds, bool utc) const
{
    return format("%X", seconds, utc);
}

String LocaleFormat::formatDateTime(int64_t seconds, bool utc) const
{
    return format("%c", seconds, utc);
}

} // namespace i18n
} // namespace qv
