#include <qv/collections/IntegerHashMap.h>

namespace qv {
namespace collections {

IntegerHashMap::IntegerHashMap(const IntegerHashMap& other) : KeyedHashMap(other) {}

IntegerHashMap::~IntegerHashMap() = default;

} // namespace collections
} // namespace qv
