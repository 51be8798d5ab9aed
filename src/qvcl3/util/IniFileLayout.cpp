#include "util/IniFileLayout.h"

namespace qv {
namespace util {

void IniFileLayout::clear()
{
    m_lines.clear();
    m_deletedKeys.clear();
    m_deletedSets.clear();
}

void IniFileLayout::addLine(Line line)
{
    m_lines.push_back(std::move(line));
}

void IniFileLayout::keyDeleted(const String& set, const String& key)
{
    m_deletedKeys.insert(std::make_pair(set, key));
}

void IniFileLayout::setDeleted(const String& set, const std::vector<String>& keys)
{
    m_deletedSets.insert(set);
    for (const String& key : keys)
        m_deletedKeys.insert(std::make_pair(set, key));
}

void IniFileLayout::keyAdded(const String& set, const String& key)
{
    m_deletedSets.erase(set);
    m_deletedKeys.erase(std::make_pair(set, key));
}

bool IniFileLayout::isDeleted(const String& set, const String& key) const
{
    return m_deletedKeys.count(std::make_pair(set, key)) != 0;
}

// The file's own line end, judged by its first line that has one.
std::string IniFileLayout::lineEnd() const
{
    for (const Line& line : m_lines) {
        const std::string& bytes = line.bytes;
        if (!bytes.empty() && bytes.back() == '\n')
            return bytes.size() > 1 && bytes[bytes.size() - 2] == '\r' ? "\r\n" : "\n";
    }
    return "\n";
}

std::string IniFileLayout::render(const Sets& sets, const Encoder& encode) const
{
    const std::string newline = lineEnd();
    // Where each key line of the file stands last, and where new keys of a
    // set go: after the last key line of its last section, or its header.
    std::map<std::pair<String, String>, size_t> lastKeyLine;
    std::map<String, size_t> insertAfter;
    for (size_t i = 0; i < m_lines.size(); ++i) {
        const Line& line = m_lines[i];
        if (line.kind == KEY)
            lastKeyLine[std::make_pair(line.set, line.key)] = i;
        if (line.kind == KEY || line.kind == HEADER)
            insertAfter[line.set] = i;
    }
    std::map<size_t, std::vector<std::pair<String, String>>> additions;
    std::vector<String> newSets;
    for (const auto& set : sets) {
        auto place = insertAfter.find(set.first);
        if (place == insertAfter.end()) {
            newSets.push_back(set.first);
            continue;
        }
        for (const auto& key : set.second) {
            if (!lastKeyLine.count(std::make_pair(set.first, key.first)))
                additions[place->second].push_back(key);
        }
    }

    std::string out;
    auto endLine = [&] {
        if (!out.empty() && out.back() != '\n')
            out += newline;
    };
    auto writeKey = [&](const String& key, const String& value) {
        out += encode(key);
        out += '=';
        out += encode(value);
        out += newline;
    };
    bool skippingSection = false;
    for (size_t i = 0; i < m_lines.size(); ++i) {
        const Line& line = m_lines[i];
        if (line.kind == HEADER)
            skippingSection = sets.count(line.set) == 0 && m_deletedSets.count(line.set) != 0;
        // A removed set goes with everything in its sections, comments too.
        if (skippingSection)
            continue;
        if (line.kind == KEY) {
            const bool setGone = sets.count(line.set) == 0;
            if (isDeleted(line.set, line.key) || (setGone && m_deletedSets.count(line.set)))
                continue;
            const Keys* keys = setGone ? nullptr : &sets.at(line.set);
            auto current = keys ? keys->find(line.key) : Keys::const_iterator();
            if (keys && current != keys->end() && lastKeyLine[std::make_pair(line.set, line.key)] == i &&
                current->second.compare(line.value) != 0) {
                out.append(line.bytes, 0, line.valueBegin);
                out += encode(current->second);
                if (!line.bytes.empty() && line.bytes.back() == '\n')
                    out.append(line.bytes, line.valueEnd, std::string::npos);
                else
                    out += newline;
            } else {
                out += line.bytes;
            }
        } else {
            out += line.bytes;
        }
        auto added = additions.find(i);
        if (added != additions.end()) {
            endLine();
            for (const auto& key : added->second)
                writeKey(key.first, key.second);
        }
    }
    for (const String& set : newSets) {
        endLine();
        out += '[';
        out += encode(set);
        out += ']';
        out += newline;
        for (const auto& key : sets.at(set))
            writeKey(key.first, key.second);
    }
    return out;
}

} // namespace util
} // namespace qv
