#include <qv/log/StringBundleLogger.h>

#include <qv/core/Exception.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace qv {
namespace log {

namespace {

String marker(int32_t k)
{
    const std::string digits = "{" + std::to_string(k) + "}";
    return String(digits.c_str(), static_cast<int32_t>(digits.size()));
}

} // namespace

QV_BEGIN_INTERFACE_MAP(StringBundleLogger)
QV_INTERFACE_ENTRY(StringBundleLogger, ILevelLogger)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

StringBundleLogger::StringBundleLogger(const i18n::StringBundle* bundle, ILevelLogger* target)
    : m_bundle(bundle), m_target(target)
{
    if (!bundle || !target)
        throw ResultException(results::INVALIDARG);
}

StringBundleLogger::~StringBundleLogger() = default;

Reference<StringBundleLogger> StringBundleLogger::create(const i18n::StringBundle* bundle, ILevelLogger* target)
{
    return Reference<StringBundleLogger>(new StringBundleLogger(bundle, target));
}

void StringBundleLogger::log(int level, const String& key)
{
    m_target->log(level, m_bundle->getString(key));
}

void StringBundleLogger::log(int level, const String& key, const collections::List<Object>& args)
{
    m_target->log(level, fillArguments(m_bundle->getString(key), args));
}

String StringBundleLogger::fillArguments(const String& text, const collections::List<Object>& args)
{
    // (position in text, argument number), collected for 0, 1, ... until a
    // number does not occur.
    std::vector<std::pair<int32_t, int32_t>> occurrences;
    std::vector<String> markers;
    for (int32_t k = 0;; ++k) {
        String mark = marker(k);
        int32_t at = text.indexOf(mark);
        if (at < 0)
            break;
        if (k >= args.size())
            return text;
        while (at >= 0) {
            occurrences.emplace_back(at, k);
            at = text.indexOf(mark, at + mark.getLength());
        }
        markers.push_back(std::move(mark));
    }
    std::sort(occurrences.begin(), occurrences.end());

    String result(text);
    int32_t searchFrom = 0;
    for (const auto& occurrence : occurrences) {
        const String& mark = markers[static_cast<size_t>(occurrence.second)];
        const int32_t at = result.indexOf(mark, searchFrom);
        if (at < 0)
            continue;
        const Reference<Object>& argument = args.get(occurrence.second);
        const String value = argument ? argument->toString() : String();
        result.replace(at, mark.getLength(), value);
        searchFrom = at + value.getLength();
    }
    return result;
}

} // namespace log
} // namespace qv
