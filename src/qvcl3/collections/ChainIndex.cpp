#include "ChainIndex.h"

#include <qvcore3/qvcore3.h>

#include <algorithm>
#include <new>

namespace qv {
namespace collections {

namespace {

// Items per node: 32 digests fill four cache lines.
constexpr int32_t CAPACITY = 32;
// Far above any reachable height: a node splits only when full, so each
// level costs at least sixteen times the inserts of the level below.
constexpr int32_t MAX_DEPTH = 16;
constexpr uint32_t NO_PLACE = UINT32_MAX;

} // namespace

// A leaf holds entries; an inner node holds separators (an entry's digest and
// the entry, the least of the child to their right when they were made) and
// one child more than separators. Child i holds what is at least separator
// i - 1 and below separator i.
struct ChainIndex::Node {
    int32_t count = 0;
    bool leaf = true;
    uint64_t digests[CAPACITY];
    HashNode* entries[CAPACITY];
};

struct ChainIndex::Inner : Node {
    Node* children[CAPACITY + 1];
};

// The way down to where a probe is, or would go.
struct ChainIndex::Path {
    Inner* inners[MAX_DEPTH];
    // The child taken in each inner node.
    int32_t at[MAX_DEPTH];
    Node* leaf;
    int32_t position;
    // Whether the leaf's entry at position is the probe's key.
    bool equal;
};

namespace {

template <class T>
void insertAt(T* items, int32_t count, int32_t at, T item) noexcept
{
    std::copy_backward(items + at, items + count, items + count + 1);
    items[at] = item;
}

template <class T>
void eraseAt(T* items, int32_t count, int32_t at) noexcept
{
    std::copy(items + at + 1, items + count, items + at);
}

} // namespace

ChainIndex* ChainIndex::create(const HashTable::KeyOrder* keys) noexcept
{
    return new (std::nothrow) ChainIndex(keys);
}

ChainIndex::~ChainIndex()
{
    freeTree(m_root);
    QVMemFree(m_places);
}

void ChainIndex::freeNode(Node* node) noexcept
{
    if (node->leaf)
        delete node;
    else
        delete static_cast<Inner*>(node);
}

void ChainIndex::freeTree(Node* node) noexcept
{
    if (!node)
        return;
    if (!node->leaf) {
        const Inner* inner = static_cast<const Inner*>(node);
        for (int32_t i = 0; i <= inner->count; ++i)
            freeTree(inner->children[i]);
    }
    freeNode(node);
}

int ChainIndex::compare(const Probe& probe, const HashNode* entry) const noexcept
{
    return probe.node ? m_keys->compareNodes(probe.node, entry) : m_keys->compareKey(probe.key, entry);
}

int32_t ChainIndex::lowerBound(const Node* node, const Probe& probe, bool& equal) const noexcept
{
    // Counting the smaller digests reads the node's few cache lines at once
    // and has no branch to mispredict, which beats a binary search here.
    const uint64_t* digests = node->digests;
    int32_t low = 0;
    for (int32_t i = 0; i < node->count; ++i)
        low += digests[i] < probe.digest ? 1 : 0;
    int32_t high = low;
    while (high < node->count && digests[high] == probe.digest)
        ++high;
    // Equal digests (almost always none, or the entry sought): the keys decide.
    equal = false;
    while (low < high) {
        const int32_t middle = low + (high - low) / 2;
        const int order = compare(probe, node->entries[middle]);
        if (order == HashTable::KeyOrder::UNORDERED)
            return -1;
        if (order == 0) {
            equal = true;
            return middle;
        }
        if (order > 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

int32_t ChainIndex::childFor(const Inner* inner, const Probe& probe) const noexcept
{
    bool equal = false;
    const int32_t at = lowerBound(inner, probe, equal);
    return equal && at >= 0 ? at + 1 : at;
}

bool ChainIndex::descend(const Probe& probe, Path& path) const noexcept
{
    Node* node = m_root;
    for (int32_t level = 0; level < m_depth; ++level) {
        path.inners[level] = static_cast<Inner*>(node);
        path.at[level] = childFor(path.inners[level], probe);
        if (path.at[level] < 0)
            return false;
        node = path.inners[level]->children[path.at[level]];
    }
    path.leaf = node;
    path.position = lowerBound(node, probe, path.equal);
    return path.position >= 0;
}

bool ChainIndex::find(uint64_t digest, const void* key, HashNode*& found) const noexcept
{
    found = nullptr;
    if (!m_root)
        return true;
    Path path;
    if (!descend(Probe{digest, key, nullptr}, path))
        return false;
    if (path.equal)
        found = path.leaf->entries[path.position];
    return true;
}

bool ChainIndex::takePlace(HashNode* node, uint64_t digest) noexcept
{
    uint32_t place = m_freePlace;
    if (place != NO_PLACE) {
        m_freePlace = static_cast<uint32_t>(m_places[place].digest);
    } else {
        if (m_placeCount == m_placeCapacity) {
            if (m_placeCapacity >= NO_PLACE / 2)
                return false;
            const uint32_t capacity = m_placeCapacity ? m_placeCapacity * 2 : 16;
            void* grown = QVMemRealloc(m_places, capacity * sizeof(Place));
            if (!grown)
                return false;
            m_places = static_cast<Place*>(grown);
            m_placeCapacity = capacity;
        }
        place = m_placeCount++;
    }
    m_places[place] = Place{nullptr, digest};
    node->indexSlot = place;
    return true;
}

void ChainIndex::releasePlace(uint32_t place) noexcept
{
    m_places[place].previous = nullptr;
    m_places[place].digest = m_freePlace;
    m_freePlace = place;
}

bool ChainIndex::add(HashNode* node, uint64_t digest) noexcept
{
    if (!takePlace(node, digest))
        return false;
    if (!insertItem(Probe{digest, nullptr, node}, node)) {
        releasePlace(node->indexSlot);
        return false;
    }
    if (m_size == 0)
        m_hash = node->hash;
    else if (node->hash != m_hash)
        m_oneHash = false;
    ++m_size;
    return true;
}

bool ChainIndex::addHead(HashNode* node, uint64_t digest) noexcept
{
    if (!add(node, digest))
        return false;
    if (node->next)
        m_places[node->next->indexSlot].previous = node;
    return true;
}

bool ChainIndex::insertItem(const Probe& probe, HashNode* entry) noexcept
{
    if (!m_root && !(m_root = new (std::nothrow) Node()))
        return false;
    Path found;
    if (!descend(probe, found))
        return false;
    Inner** path = found.inners;
    const int32_t* at = found.at;
    Node* node = found.leaf;
    const int32_t position = found.position;

    // Every node the insertion needs is allocated first, so that a failure
    // leaves the tree as it was.
    int32_t splits = 0;
    if (node->count == CAPACITY) {
        splits = 1;
        for (int32_t level = m_depth - 1; level >= 0 && path[level]->count == CAPACITY; --level)
            ++splits;
    }
    const bool newRoot = splits > m_depth;
    if (newRoot && m_depth + 1 >= MAX_DEPTH)
        return false;
    Node* spareLeaf = nullptr;
    Inner* spareInners[MAX_DEPTH + 1];
    int32_t spareCount = 0;
    bool allocated = true;
    if (splits > 0)
        allocated = (spareLeaf = new (std::nothrow) Node()) != nullptr;
    const int32_t innersNeeded = (splits > 0 ? splits - 1 : 0) + (newRoot ? 1 : 0);
    for (; allocated && spareCount < innersNeeded; ++spareCount) {
        spareInners[spareCount] = new (std::nothrow) Inner();
        allocated = spareInners[spareCount] != nullptr;
    }
    if (!allocated) {
        delete spareLeaf;
        for (int32_t i = 0; i < spareCount; ++i)
            delete spareInners[i];
        return false;
    }

    Node* right = nullptr;
    if (node->count < CAPACITY) {
        insertAt(node->digests, node->count, position, probe.digest);
        insertAt(node->entries, node->count, position, entry);
        ++node->count;
    } else {
        constexpr int32_t half = CAPACITY / 2;
        right = spareLeaf;
        std::copy(node->digests + half, node->digests + CAPACITY, right->digests);
        std::copy(node->entries + half, node->entries + CAPACITY, right->entries);
        node->count = half;
        right->count = CAPACITY - half;
        Node* target = position <= half ? node : right;
        const int32_t targetAt = position <= half ? position : position - half;
        insertAt(target->digests, target->count, targetAt, probe.digest);
        insertAt(target->entries, target->count, targetAt, entry);
        ++target->count;
    }
    uint64_t upDigest = right ? right->digests[0] : 0;
    HashNode* upEntry = right ? right->entries[0] : nullptr;
    int32_t spareUsed = 0;
    for (int32_t level = m_depth - 1; right && level >= 0; --level) {
        Inner* parent = path[level];
        const int32_t i = at[level];
        if (parent->count < CAPACITY) {
            insertAt(parent->digests, parent->count, i, upDigest);
            insertAt(parent->entries, parent->count, i, upEntry);
            insertAt(parent->children, parent->count + 1, i + 1, right);
            ++parent->count;
            right = nullptr;
            break;
        }
        // Full: the separators and children with the new ones, split around
        // the middle separator, which goes up.
        uint64_t digests[CAPACITY + 1];
        HashNode* entries[CAPACITY + 1];
        Node* children[CAPACITY + 2];
        std::copy(parent->digests, parent->digests + CAPACITY, digests);
        std::copy(parent->entries, parent->entries + CAPACITY, entries);
        std::copy(parent->children, parent->children + CAPACITY + 1, children);
        insertAt(digests, CAPACITY, i, upDigest);
        insertAt(entries, CAPACITY, i, upEntry);
        insertAt(children, CAPACITY + 1, i + 1, right);
        constexpr int32_t middle = (CAPACITY + 1) / 2;
        Inner* sibling = spareInners[spareUsed++];
        sibling->leaf = false;
        parent->count = middle;
        std::copy(digests, digests + middle, parent->digests);
        std::copy(entries, entries + middle, parent->entries);
        std::copy(children, children + middle + 1, parent->children);
        sibling->count = CAPACITY - middle;
        std::copy(digests + middle + 1, digests + CAPACITY + 1, sibling->digests);
        std::copy(entries + middle + 1, entries + CAPACITY + 1, sibling->entries);
        std::copy(children + middle + 1, children + CAPACITY + 2, sibling->children);
        upDigest = digests[middle];
        upEntry = entries[middle];
        right = sibling;
    }
    if (right) {
        Inner* root = spareInners[spareUsed++];
        root->leaf = false;
        root->count = 1;
        root->digests[0] = upDigest;
        root->entries[0] = upEntry;
        root->children[0] = m_root;
        root->children[1] = right;
        m_root = root;
        ++m_depth;
    }
    return true;
}

HashNode* ChainIndex::previousOf(const HashNode* node) const noexcept
{
    return m_places[node->indexSlot].previous;
}

bool ChainIndex::remove(HashNode* node) noexcept
{
    if (!m_root)
        return false;
    const Probe probe{m_places[node->indexSlot].digest, nullptr, node};
    Path found;
    if (!descend(probe, found) || !found.equal)
        return false;
    Inner** path = found.inners;
    const int32_t* at = found.at;
    Node* current = found.leaf;
    const int32_t position = found.position;
    if (node->next)
        m_places[node->next->indexSlot].previous = m_places[node->indexSlot].previous;
    releasePlace(node->indexSlot);
    eraseAt(current->digests, current->count, position);
    eraseAt(current->entries, current->count, position);
    --current->count;
    --m_size;

    // Nodes left empty go, each with a separator of its parent; nodes are
    // not merged otherwise (a lookup's cost is the height, which removals
    // never raise). A separator naming the removed entry is replaced by the
    // least entry to its right, so that no separator outlives its entry.
    bool empty = current->count == 0;
    for (int32_t level = m_depth - 1; level >= 0; --level) {
        Inner* parent = path[level];
        const int32_t i = at[level];
        if (empty) {
            freeNode(current);
            if (parent->count == 0) {
                current = parent;
                continue;
            }
            const int32_t separator = i > 0 ? i - 1 : 0;
            eraseAt(parent->digests, parent->count, separator);
            eraseAt(parent->entries, parent->count, separator);
            eraseAt(parent->children, parent->count + 1, i);
            --parent->count;
            empty = false;
        } else if (i > 0 && parent->entries[i - 1] == node) {
            const Node* least = parent->children[i];
            while (!least->leaf)
                least = static_cast<const Inner*>(least)->children[0];
            parent->digests[i - 1] = least->digests[0];
            parent->entries[i - 1] = least->entries[0];
        }
        current = parent;
    }
    if (empty) {
        freeNode(current);
        m_root = nullptr;
        m_depth = 0;
        return true;
    }
    while (m_depth > 0 && m_root->count == 0) {
        Inner* root = static_cast<Inner*>(m_root);
        m_root = root->children[0];
        delete root;
        --m_depth;
    }
    return true;
}

void ChainIndex::relink(HashNode* head) noexcept
{
    HashNode* previous = nullptr;
    for (HashNode* node = head; node; previous = node, node = node->next)
        m_places[node->indexSlot].previous = previous;
}

} // namespace collections
} // namespace qv
