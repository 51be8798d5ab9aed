#include "core/ClassTable.h"

#include <qv/collections/IntegerHashMap.h>
#include <qv/collections/Str1HashMap.h>
#include <qv/collections/StringHashMap.h>
#include <qv/collections/qvcom/ArrayList.h>
#include <qv/collections/qvcom/HashMap.h>
#include <qv/collections/qvcom/HashSet.h>
#include <qv/collections/qvcom/IQVComparator.h>
#include <qv/collections/qvcom/LinkedList.h>
#include <qv/collections/qvcom/MapViews.h>
#include <qv/collections/qvcom/SubList.h>
#include <qv/collections/qvcom/Unmodifiable.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_collectionsClassRows[] = {
    QV_CLASS_ROW(collections::IntegerHashMap),
    QV_CLASS_ROW(collections::Str1HashMap),
    QV_CLASS_ROW(collections::Str1HashMapLC),
    QV_CLASS_ROW(collections::StringHashMap),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::AbstractCollection),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::AbstractIterator),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::AbstractList),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::AbstractListIterator),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::AbstractMap),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::AbstractSet),
    QV_CLASS_ROW(collections::qvcom::ArrayList),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::DefaultComparator),
    QV_CLASS_ROW(collections::qvcom::HashMap),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::HashMapEntry),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::HashMapEntrySet),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::HashMapIterator),
    QV_CLASS_ROW(collections::qvcom::HashSet),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::IndexedListIterator),
    QV_CLASS_ROW(collections::qvcom::LinkedList),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::LinkedListIterator),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::MapEntrySet),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::MapKeySet),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::MapValues),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::MapViewIterator),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::NaturalOrdering),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::StringComparator),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::SubList),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::UnmodifiableCollection),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::UnmodifiableList),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::UnmodifiableMap),
    QV_CLASS_ROW_NO_CREATOR(collections::qvcom::UnmodifiableSet),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
