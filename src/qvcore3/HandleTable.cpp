#include "HandleTable.h"

#include <pthread.h>

#include <atomic>
#include <new>

namespace qvcore3 {

using namespace detail;

namespace {

pthread_mutex_t g_freeLock = PTHREAD_MUTEX_INITIALIZER;
uint32_t g_freeHead = kNoSlot; // FIFO, so a freed slot is reused as late as possible
uint32_t g_freeTail = kNoSlot;
uint32_t g_chunksUsed = 0;
std::atomic<uint32_t> g_open{0};

// Splits a handle; false for values no slot could have issued.
bool Decode(QVHANDLE handle, uint32_t* index, uint32_t* generation) noexcept
{
    if (handle <= 0) {
        return false;
    }
    const uint32_t value = static_cast<uint32_t>(handle);
    *index = value & kIndexMask;
    *generation = (value >> kIndexBits) & kGenerationMask;
    return *generation != 0;
}

QVHANDLE Encode(uint32_t index, uint32_t generation) noexcept
{
    return static_cast<QVHANDLE>((generation << kIndexBits) | index);
}

void PushFree(uint32_t index) noexcept
{
    Slot* slot = SlotAt(index);
    slot->nextFree = kNoSlot;
    if (g_freeTail == kNoSlot) {
        g_freeHead = index;
    } else {
        SlotAt(g_freeTail)->nextFree = index;
    }
    g_freeTail = index;
}

bool GrowLocked() noexcept
{
    if (g_chunksUsed == kChunkCount) {
        return false;
    }
    Slot* chunk = new (std::nothrow) Slot[kChunkSize];
    if (!chunk) {
        return false;
    }
    const uint32_t base = g_chunksUsed << kChunkBits;
    g_chunks[g_chunksUsed].store(chunk, std::memory_order_release);
    ++g_chunksUsed;
    for (uint32_t i = 0; i < kChunkSize; ++i) {
        PushFree(base + i);
    }
    return true;
}

} // namespace

namespace detail {

std::atomic<Slot*> g_chunks[kChunkCount];

// The last reference to a closed slot is gone: delete and recycle.
QVRESULT Recycle(uint32_t index, Slot* slot) noexcept
{
    HandleObject* object = slot->object.load(std::memory_order_relaxed);
    const QVRESULT result = object->closeResources();
    delete object;
    const uint64_t word = slot->word.load(std::memory_order_relaxed);
    const uint32_t next = WordGeneration(word) % kGenerationMask + 1;
    pthread_mutex_lock(&g_freeLock);
    slot->object.store(nullptr, std::memory_order_relaxed);
    slot->word.store(MakeWord(next, Kind{}, false), std::memory_order_release);
    PushFree(index);
    pthread_mutex_unlock(&g_freeLock);
    g_open.fetch_sub(1, std::memory_order_relaxed);
    return result;
}

} // namespace detail

QVRESULT HandleReserve(QVHANDLE* handle) noexcept
{
    pthread_mutex_lock(&g_freeLock);
    if (g_freeHead == kNoSlot && !GrowLocked()) {
        pthread_mutex_unlock(&g_freeLock);
        return QV_E_OUTOFMEMORY;
    }
    const uint32_t index = g_freeHead;
    Slot* slot = SlotAt(index);
    g_freeHead = slot->nextFree;
    if (g_freeHead == kNoSlot) {
        g_freeTail = kNoSlot;
    }
    slot->nextFree = kNoSlot;
    const uint32_t generation = WordGeneration(slot->word.load(std::memory_order_relaxed));
    pthread_mutex_unlock(&g_freeLock);
    *handle = Encode(index, generation);
    return QV_S_OK;
}

void HandlePublish(QVHANDLE handle, HandleObject* object) noexcept
{
    uint32_t index = 0;
    uint32_t generation = 0;
    Decode(handle, &index, &generation);
    Slot* slot = SlotAt(index);
    slot->object.store(object, std::memory_order_relaxed);
    g_open.fetch_add(1, std::memory_order_relaxed);
    slot->word.store(MakeWord(generation, object->kind(), true), std::memory_order_release);
}

void HandleUnreserve(QVHANDLE handle) noexcept
{
    uint32_t index = 0;
    uint32_t generation = 0;
    Decode(handle, &index, &generation);
    pthread_mutex_lock(&g_freeLock);
    PushFree(index);
    pthread_mutex_unlock(&g_freeLock);
}

QVRESULT HandleInsert(HandleObject* object, QVHANDLE* handle) noexcept
{
    QVHANDLE reserved = QV_INVALID_HANDLE;
    const QVRESULT result = HandleReserve(&reserved);
    if (QV_FAILED(result)) {
        delete object;
        return result;
    }
    HandlePublish(reserved, object);
    *handle = reserved;
    return QV_S_OK;
}

QVRESULT HandleClose(QVHANDLE handle, uint32_t kindMask) noexcept
{
    uint32_t index = 0;
    uint32_t generation = 0;
    if (!Decode(handle, &index, &generation)) {
        return QV_E_INVALIDARG;
    }
    Slot* slot = SlotAt(index);
    if (!slot) {
        return QV_E_INVALIDARG;
    }
    uint64_t word = slot->word.load(std::memory_order_acquire);
    for (;;) {
        if (!(word & kAlive) || WordGeneration(word) != generation || !((1u << WordKind(word)) & kindMask)) {
            return QV_E_INVALIDARG;
        }
        if (slot->word.compare_exchange_weak(word, word & ~kAlive, std::memory_order_acq_rel,
                                             std::memory_order_acquire)) {
            break;
        }
    }
    if ((word & kRefMask) == 0) {
        return Recycle(index, slot);
    }
    return QV_S_OK;
}

uint32_t HandleCountOpen() noexcept
{
    return g_open.load(std::memory_order_relaxed);
}

} // namespace qvcore3

extern "C" uint32_t QVHandleCountOpen(void) noexcept
{
    return qvcore3::HandleCountOpen();
}
