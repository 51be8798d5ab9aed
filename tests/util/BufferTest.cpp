#include <qv/core/Exception.h>
#include <qv/core/Reference.h>
#include <qv/util/BasicBuffer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <string>
#include <thread>
#include <vector>

using namespace qv;
using namespace qv::util;

namespace {

// Both families share one implementation; every test here runs for each.
template <class E>
class BufferFamily : public ::testing::Test {
public:
    static std::vector<E> elements(int32_t n)
    {
        std::vector<E> v(static_cast<size_t>(n));
        for (int32_t i = 0; i < n; ++i)
            v[static_cast<size_t>(i)] = static_cast<E>('a' + i % 26);
        return v;
    }
};
typedef ::testing::Types<signed char, char16_t> Elements;
TYPED_TEST_SUITE(BufferFamily, Elements);

bool faultInjection()
{
    return QVFaultInjectionAvailable() != 0;
}

} // namespace

TYPED_TEST(BufferFamily, SizingRoundsUpToSixteenWithoutGeometricGrowth)
{
    typedef BasicRWBuffer<TypeParam> RW;
    EXPECT_EQ(RW(0).getCapacity(), 0);
    EXPECT_EQ(RW(0).GetData(), nullptr);
    EXPECT_EQ(RW(1).getCapacity(), 16);
    EXPECT_EQ(RW(16).getCapacity(), 16);
    EXPECT_EQ(RW(17).getCapacity(), 32);

    RW grown(16);
    grown.ensureCapacity(17);
    EXPECT_EQ(grown.getCapacity(), 32);
    grown.ensureCapacity(33);
    EXPECT_EQ(grown.getCapacity(), 48);
    grown.ensureCapacity(20);
    EXPECT_EQ(grown.getCapacity(), 48) << "ensureCapacity never shrinks";
}

TYPED_TEST(BufferFamily, DataConstructorAllocatesTheLargerAndCopiesTheLength)
{
    auto source = TestFixture::elements(10);
    BasicRWBuffer<TypeParam> buffer(source.data(), 10, 3);
    EXPECT_EQ(buffer.getCapacity(), 16);
    ASSERT_EQ(buffer.GetLength(), 10);
    EXPECT_NE(buffer.GetData(), source.data());
    EXPECT_TRUE(std::equal(source.begin(), source.end(), buffer.GetData()));
    // Writable data with the capacity left out is copied just the same.
    BasicRWBuffer<TypeParam> twoArguments(source.data(), 10);
    EXPECT_EQ(twoArguments.GetLength(), 10);
    EXPECT_EQ(twoArguments.getCapacity(), 16);
    EXPECT_NE(twoArguments.GetData(), source.data());

    BasicRWBuffer<TypeParam> copy(buffer);
    EXPECT_EQ(copy.getCapacity(), 16);
    EXPECT_EQ(copy.GetLength(), 10);
    EXPECT_NE(copy.GetData(), buffer.GetData());
    EXPECT_EQ(copy.GetRefCount(), 0) << "a copy is a new object";

    BasicRWBuffer<TypeParam> assigned(40);
    assigned = buffer;
    EXPECT_EQ(assigned.GetLength(), 10);
    EXPECT_EQ(assigned.getCapacity(), 48);
    EXPECT_TRUE(std::equal(source.begin(), source.end(), assigned.GetData()));

    EXPECT_THROW(BasicRWBuffer<TypeParam>(nullptr, 4, 0), ResultException);
    BasicMTBuffer<TypeParam> room(nullptr, 0, 20);
    EXPECT_EQ(room.getCapacity(), 32);
    EXPECT_EQ(room.GetLength(), 0);
    EXPECT_EQ(BasicROBuffer<TypeParam>(nullptr, 0).GetData(), nullptr);
}

TYPED_TEST(BufferFamily, WriteCycleThroughTheInterface)
{
    Reference<BasicRWBuffer<TypeParam>> buffer = makeReference<BasicRWBuffer<TypeParam>>();
    TypeParam* p = reinterpret_cast<TypeParam*>(1);
    EXPECT_EQ(buffer->GetWriteLock(0, &p), 0);
    EXPECT_EQ(p, nullptr) << "no block for an empty request";
    EXPECT_EQ(buffer->ReleaseWriteLock(-1), 0);

    ASSERT_EQ(buffer->GetWriteLock(5, &p), 0);
    ASSERT_NE(p, nullptr);
    for (int i = 0; i < 5; ++i)
        p[i] = static_cast<TypeParam>('v');
    EXPECT_EQ(buffer->ReleaseWriteLock(5), 0);
    EXPECT_EQ(buffer->GetLength(), 5);

    ASSERT_EQ(buffer->GetWriteLock(1, &p), 0);
    EXPECT_EQ(buffer->ReleaseWriteLock(-1), 0);
    EXPECT_EQ(buffer->GetLength(), 5) << "a negative length keeps the old one";

    ASSERT_EQ(buffer->GetWriteLock(1, &p), 0);
    EXPECT_EQ(buffer->ReleaseWriteLock(17), results::INVALIDARG) << "beyond the capacity";
    EXPECT_EQ(buffer->GetLength(), 5);

    const TypeParam* r = nullptr;
    EXPECT_EQ(buffer->GetReadLock(&r), 0);
    EXPECT_EQ(r, buffer->GetData());
    EXPECT_EQ(buffer->ReleaseReadLock(), 0);
    EXPECT_EQ(buffer->GetReadLock(static_cast<const TypeParam**>(nullptr)), results::POINTER);
    EXPECT_EQ(buffer->IsWritable(), 1);
    EXPECT_FALSE(buffer->isEmpty());
}

TYPED_TEST(BufferFamily, FreeExtraShrinksToTheLengthAndFreesAnEmptyBuffer)
{
    BasicRWBuffer<TypeParam> buffer(64);
    TypeParam* p = buffer.getWriteLock(20);
    for (int i = 0; i < 20; ++i)
        p[i] = static_cast<TypeParam>('f');
    buffer.releaseWriteLock(20);
    EXPECT_EQ(buffer.FreeExtra(), 0);
    EXPECT_EQ(buffer.getCapacity(), 32);
    EXPECT_EQ(buffer.GetLength(), 20);
    EXPECT_EQ(buffer.GetData()[19], static_cast<TypeParam>('f'));

    BasicRWBuffer<TypeParam> empty(64);
    EXPECT_EQ(empty.FreeExtra(), 0);
    EXPECT_EQ(empty.GetData(), nullptr);
    EXPECT_EQ(empty.getCapacity(), 0);
}

TYPED_TEST(BufferFamily, ReadOnlyRefusesWritesThroughBothFaces)
{
    auto source = TestFixture::elements(6);
    Reference<BasicROBuffer<TypeParam>> ro = makeReference<BasicROBuffer<TypeParam>>(source.data(), 6, 99);
    EXPECT_EQ(ro->GetData(), source.data());
    EXPECT_EQ(ro->GetLength(), 6);

    TypeParam* p = reinterpret_cast<TypeParam*>(1);
    EXPECT_EQ(ro->GetWriteLock(4, &p), results::NOTIMPL);
    EXPECT_EQ(p, nullptr);
    p = reinterpret_cast<TypeParam*>(1);
    EXPECT_EQ(ro->EnsureCapacity(4, &p), results::NOTIMPL);
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(ro->ReleaseWriteLock(2), results::NOTIMPL);
    EXPECT_EQ(ro->GetLength(), 6);
    EXPECT_EQ(ro->IsWritable(), 0);
    EXPECT_EQ(ro->FreeExtra(), 0);

    EXPECT_THROW(ro->getWriteLock(4), ReadOnlyException);
    EXPECT_THROW(ro->ensureCapacity(4), ReadOnlyException);
    EXPECT_THROW(ro->releaseWriteLock(2), ReadOnlyException);

    // The generic interface implementation turns the class operation's
    // exception into that exception's code.
    BasicAbstractBuffer<TypeParam>* generic = ro.get();
    p = reinterpret_cast<TypeParam*>(1);
    EXPECT_EQ(generic->BasicAbstractBuffer<TypeParam>::GetWriteLock(4, &p), ReadOnlyException().getResult());
    EXPECT_EQ(p, nullptr);

    BasicROBuffer<TypeParam> copy(*ro);
    EXPECT_EQ(copy.GetData(), source.data()) << "shallow copy";
}

TYPED_TEST(BufferFamily, InterfaceMapAnswersTheBufferIdentifier)
{
    typedef typename BufferTraits<TypeParam>::Interface Interface;
    Reference<BasicMTBuffer<TypeParam>> buffer = makeReference<BasicMTBuffer<TypeParam>>(8);
    Reference<Interface> face;
    ASSERT_EQ(buffer->QueryInterface(Interface::iid, face.putVoid()), 0);
    EXPECT_EQ(face.get(), static_cast<Interface*>(buffer.get()));
    EXPECT_EQ(buffer->GetRefCount(), 2);
    Reference<IQVComparable> comparable;
    EXPECT_EQ(buffer->QueryInterface(IQVComparable::iid, comparable.putVoid()), 0);
}

TYPED_TEST(BufferFamily, FailedGrowthLeavesDataCapacityAndLength)
{
    if (!faultInjection())
        GTEST_SKIP() << "built without fault injection";
    auto source = TestFixture::elements(10);
    BasicRWBuffer<TypeParam> buffer(source.data(), 10, 0);

    // What the buffer keeps is swept in AllocationSweepTest; here, the text.
    QVFaultArmAllocation(1);
    try {
        buffer.ensureCapacity(1000);
        FAIL() << "growth should have failed";
    } catch (const std::bad_alloc& e) {
        EXPECT_STREQ(e.what(), "bad allocation");
    }

    TypeParam* p = reinterpret_cast<TypeParam*>(1);
    QVFaultArmAllocation(1);
    EXPECT_EQ(buffer.EnsureCapacity(1000, &p), results::OUTOFMEMORY);
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(buffer.getCapacity(), 16);

    QVFaultArmAllocation(1);
    EXPECT_THROW(BasicRWBuffer<TypeParam>(20), OutOfMemoryException);
    QVFaultDisarmAll();
}

namespace {

// Storage handed to the buffer by the derived object, as a String's buffer
// keeps its first units in its own allocation.
template <class E>
class EmbeddedBuffer : public BasicRWBuffer<E> {
public:
    EmbeddedBuffer() : BasicRWBuffer<E>(typename BasicRWBuffer<E>::EmbeddedStorage(), m_room, 32) {}
    const E* room() const { return m_room; }
    bool embedded() const { return this->isEmbedded(); }

private:
    E m_room[32];
};

} // namespace

// The embedded room is used until growth must leave it; it is never freed
// (AddressSanitizer would report freeing it), a shrink only lowers the
// capacity, and a failed move out keeps data, capacity and length.
TYPED_TEST(BufferFamily, EmbeddedStorageIsUsedUntilGrowthMovesTheElementsOut)
{
    auto source = TestFixture::elements(40);
    EmbeddedBuffer<TypeParam> buffer;
    EXPECT_EQ(buffer.GetData(), buffer.room());
    EXPECT_EQ(buffer.getCapacity(), 32);
    TypeParam* p = buffer.getWriteLock(20);
    EXPECT_EQ(p, buffer.room());
    std::copy(source.begin(), source.begin() + 20, p);
    buffer.releaseWriteLock(20);

    buffer.freeExtra();
    EXPECT_EQ(buffer.getCapacity(), 32) << "20 elements round up to 32: nothing to shrink";
    buffer.releaseWriteLock(10);
    buffer.freeExtra();
    EXPECT_EQ(buffer.getCapacity(), 16);
    EXPECT_EQ(buffer.GetData(), buffer.room());
    EXPECT_THROW(buffer.releaseWriteLock(17), ResultException) << "the lowered capacity is the limit";

    if (faultInjection()) {
        QVFaultArmAllocation(1);
        EXPECT_THROW(buffer.ensureCapacity(40), OutOfMemoryException);
        QVFaultDisarmAll();
        EXPECT_EQ(buffer.GetData(), buffer.room());
        EXPECT_EQ(buffer.getCapacity(), 16);
        EXPECT_EQ(buffer.GetLength(), 10);
        EXPECT_TRUE(buffer.embedded());
    }

    p = buffer.ensureCapacity(40);
    EXPECT_NE(p, buffer.room());
    EXPECT_FALSE(buffer.embedded());
    EXPECT_EQ(buffer.getCapacity(), 48);
    EXPECT_EQ(buffer.GetLength(), 10);
    EXPECT_TRUE(std::equal(source.begin(), source.begin() + 16, p))
        << "the whole room moved, also elements written beyond the length, as a reallocation keeps them";
    std::copy(source.begin(), source.end(), p);
    buffer.releaseWriteLock(40);
    p = buffer.ensureCapacity(200);
    EXPECT_TRUE(std::equal(source.begin(), source.end(), p)) << "later growth reallocates the own block";

    EmbeddedBuffer<TypeParam> emptied;
    emptied.freeExtra();
    EXPECT_EQ(emptied.GetData(), nullptr);
    EXPECT_EQ(emptied.getCapacity(), 0);
    EXPECT_FALSE(emptied.embedded());
    EXPECT_NE(emptied.ensureCapacity(5), emptied.room()) << "once left, the room is not taken back";
    EXPECT_EQ(emptied.getCapacity(), 16);

    // A copy is an ordinary buffer with the same capacity and elements.
    EmbeddedBuffer<TypeParam> original;
    std::copy(source.begin(), source.begin() + 5, original.getWriteLock(5));
    original.releaseWriteLock(5);
    BasicRWBuffer<TypeParam> copy(original);
    EXPECT_NE(copy.GetData(), original.room());
    EXPECT_EQ(copy.getCapacity(), 32);
    EXPECT_TRUE(std::equal(source.begin(), source.begin() + 5, copy.GetData()));
}

TEST(MTBuffer, FailedWriteLockGivesTheLockBack)
{
    if (!faultInjection())
        GTEST_SKIP() << "built without fault injection";
    MTCharBuffer buffer(4);
    char16_t* p = nullptr;
    QVFaultArmAllocation(1);
    EXPECT_EQ(buffer.GetWriteLock(4000, &p), results::OUTOFMEMORY);
    QVFaultDisarmAll();
    // Would wait forever had the failed call kept the lock.
    ASSERT_EQ(buffer.GetWriteLock(8, &p), 0);
    EXPECT_EQ(buffer.ReleaseWriteLock(0), 0);
    const char16_t* r = nullptr;
    ASSERT_EQ(buffer.GetReadLock(&r), 0);
    EXPECT_EQ(buffer.ReleaseReadLock(), 0);
}

TEST(CharBuffer, UnsignedShortSpellingsMatchTheChar16Ones)
{
    const unsigned short text[] = {'a', 'b', 'c'};
    RWCharBuffer buffer(text, 3);
    ROCharBuffer view(text, 3);
    EXPECT_EQ(view.GetData(), reinterpret_cast<const char16_t*>(text));
    ICharBuffer* face = &buffer;
    const unsigned short* r = nullptr;
    ASSERT_EQ(face->GetReadLock(&r), 0);
    EXPECT_EQ(r[2], 'c');
    face->ReleaseReadLock();
    unsigned short* w = nullptr;
    ASSERT_EQ(face->GetWriteLock(4, &w), 0);
    w[3] = 'd';
    face->ReleaseWriteLock(4);
    EXPECT_EQ(buffer.GetData()[3], u'd');
    EXPECT_EQ(face->EnsureCapacity(40, &w), 0);
    EXPECT_EQ(buffer.getCapacity(), 48);
}

TEST(CopyCharBuffer, CopiesTheWholeSourceIntoTheTarget)
{
    RWCharBuffer source(u"hello", 5);
    MTCharBuffer target(u"xxxxxxxxxxxxxxxxxxxxxx", 22);
    EXPECT_EQ(QVCopyCharBuffer(&target, &source), 0);
    EXPECT_EQ(target.GetLength(), 5);
    EXPECT_EQ(std::u16string(target.GetData(), 5), u"hello");

    ROCharBuffer readOnly(u"abc", 3);
    EXPECT_EQ(QVCopyCharBuffer(nullptr, &source), results::INVALIDARG);
    EXPECT_EQ(QVCopyCharBuffer(&target, nullptr), results::INVALIDARG);
    EXPECT_EQ(QVCopyCharBuffer(&target, &target), 0);
    EXPECT_EQ(target.GetLength(), 5);
    // The target's lock must be free again after each call.
    EXPECT_EQ(QVCopyCharBuffer(&target, &readOnly), 0);
    EXPECT_EQ(std::u16string(target.GetData(), 3), u"abc");
}

// Writers fill the whole text with one repeated unit and a varying length;
// readers check under the read lock that they never see two writers' work
// mixed.
TEST(MTBuffer, HammerReadersAndWriters)
{
    Reference<MTCharBuffer> buffer = makeReference<MTCharBuffer>(u"aaaa", 4);
    std::atomic<int> torn{0};
    std::atomic<int> reads{0};
    std::vector<std::thread> threads;
    for (int w = 0; w < 2; ++w) {
        threads.emplace_back([&, w] {
            for (int i = 0; i < 1500; ++i) {
                int32_t length = 1 + (i * 7 + w) % 90;
                char16_t* p = nullptr;
                ASSERT_EQ(buffer->GetWriteLock(length, &p), 0);
                for (int32_t k = 0; k < length; ++k)
                    p[k] = static_cast<char16_t>(u'a' + (i + w) % 26);
                ASSERT_EQ(buffer->ReleaseWriteLock(length), 0);
                if (i % 100 == 0) {
                    ASSERT_EQ(buffer->FreeExtra(), 0);
                }
            }
        });
    }
    for (int r = 0; r < 2; ++r) {
        threads.emplace_back([&] {
            for (int i = 0; i < 1500; ++i) {
                const char16_t* p = nullptr;
                ASSERT_EQ(buffer->GetReadLock(&p), 0);
                int32_t length = buffer->GetLength();
                for (int32_t k = 1; k < length; ++k) {
                    if (p[k] != p[0]) {
                        ++torn;
                        break;
                    }
                }
                ++reads;
                ASSERT_EQ(buffer->ReleaseReadLock(), 0);
            }
        });
    }
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(torn.load(), 0);
    EXPECT_EQ(reads.load(), 3000);
}
