#include <qv/collections/Str1HashMap.h>

namespace qv {
namespace collections {

Str1HashMap::Str1HashMap(const Str1HashMap& other) : KeyedHashMap(other) {}

Str1HashMap::~Str1HashMap() = default;

Str1HashMapLC::Str1HashMapLC(const Str1HashMapLC& other) : KeyedHashMap(other) {}

Str1HashMapLC::~Str1HashMapLC() = default;

} // namespace collections
} // namespace qv
