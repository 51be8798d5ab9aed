#ifndef QVCL3_UTIL_INIFILELAYOUT_H
#define QVCL3_UTIL_INIFILELAYOUT_H

#include <qv/lang/String.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qv {
namespace util {

// The lines of an INI file as read, for the rewrite that keeps the layout:
// every line is written again byte for byte unless the sets in memory say it
// must change. Deletions are remembered until the next read, so that a key
// that was never loaded (it stood before the first header, say) is told from
// one the caller removed.
class IniFileLayout {
public:
    typedef std::map<String, String> Keys;
    typedef std::map<String, Keys> Sets;
    typedef std::function<std::string(const String&)> Encoder;

    enum Kind { OTHER, HEADER, KEY };

    struct Line {
        std::string bytes;
        Kind kind = OTHER;
        String set;
        String key;
        String value;
        // Where the value's bytes stand in the line.
        size_t valueBegin = 0;
        size_t valueEnd = 0;
    };

    void clear();
    void addLine(Line line);
    void keyDeleted(const String& set, const String& key);
    void setDeleted(const String& set, const std::vector<String>& keys);
    void keyAdded(const String& set, const String& key);

    // The file's new bytes for the sets in memory.
    std::string render(const Sets& sets, const Encoder& encode) const;

private:
    bool isDeleted(const String& set, const String& key) const;
    std::string lineEnd() const;

    std::vector<Line> m_lines;
    std::set<std::pair<String, String>> m_deletedKeys;
    std::set<String> m_deletedSets;
};

} // namespace util
} // namespace qv

#endif
