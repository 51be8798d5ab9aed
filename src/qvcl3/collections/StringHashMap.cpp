#include <qv/collections/StringHashMap.h>

namespace qv {
namespace collections {

StringHashMap::StringHashMap(const StringHashMap& other) : KeyedHashMap(other) {}

StringHashMap::~StringHashMap() = default;

} // namespace collections
} // namespace qv
