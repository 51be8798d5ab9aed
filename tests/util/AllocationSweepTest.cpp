// Every buffer operation that allocates, under allocation failure: the
// failure surfaces as OutOfMemoryException (0x8007000E through the
// interface) and the buffer keeps its data, length and capacity.
#include <qv/core/Exception.h>
#include <qv/core/Reference.h>
#include <qv/core/Result.h>
#include <qv/util/BasicBuffer.h>

#include <AllocationSweep.h>
#include <gtest/gtest.h>

#include <string>

using namespace qv;
using namespace qv::util;

namespace {

template <class Buffer>
class BufferAllocationSweep : public qvtest::AllocationFaultTest {};

typedef ::testing::Types<RWByteBuffer, RWCharBuffer, MTByteBuffer, MTCharBuffer> Buffers;
TYPED_TEST_SUITE(BufferAllocationSweep, Buffers);

template <class Buffer>
std::basic_string<
    typename std::remove_const<typename std::remove_pointer<decltype(std::declval<Buffer>().getData())>::type>::type>
contents(const Buffer& buffer)
{
    return {buffer.getData(), static_cast<size_t>(buffer.getLength())};
}

} // namespace

TYPED_TEST(BufferAllocationSweep, GrowCopyAssignAndShrink)
{
    typedef typename std::remove_const<
        typename std::remove_pointer<decltype(std::declval<TypeParam>().getData())>::type>::type E;
    const std::basic_string<E> text(40, static_cast<E>('b'));
    TypeParam buffer(text.data(), static_cast<int32_t>(text.size()));
    const E* const data = buffer.getData();
    const int32_t capacity = buffer.getCapacity();
    auto unchanged = [&] {
        EXPECT_EQ(buffer.getData(), data);
        EXPECT_EQ(buffer.getCapacity(), capacity);
        EXPECT_EQ(contents(buffer), text);
    };

    qvtest::sweepAllocations([&] { buffer.ensureCapacity(4000); }, unchanged);
    EXPECT_GE(buffer.getCapacity(), 4000);
    TypeParam grown(text.data(), static_cast<int32_t>(text.size()));
    qvtest::sweepAllocations(
        [&] {
            grown.getWriteLock(5000);
            grown.releaseWriteLock(-1);
        },
        [&] { EXPECT_EQ(contents(grown), text); });

    // Through the interface the failure is the result code.
    TypeParam viaInterface(text.data(), static_cast<int32_t>(text.size()));
    qvtest::sweepAllocations([&] {
        E* at = nullptr;
        const Result code = viaInterface.EnsureCapacity(3000, &at);
        if (code == results::OUTOFMEMORY)
            throw OutOfMemoryException();
        EXPECT_EQ(code, 0);
    });

    TypeParam copy;
    qvtest::sweepAllocations([&] { TypeParam made(buffer); });
    qvtest::sweepAllocations([&] { copy = buffer; }, [&] { EXPECT_EQ(copy.getLength(), 0); });
    EXPECT_EQ(contents(copy), text);
    qvtest::sweepAllocations([&] { TypeParam made(text.data(), static_cast<int32_t>(text.size()), 900); });

    TypeParam shrinking(text.data(), 10, 4000);
    qvtest::sweepAllocations([&] { shrinking.freeExtra(); },
                             [&] { EXPECT_EQ(contents(shrinking), text.substr(0, 10)); });
    EXPECT_LT(shrinking.getCapacity(), 4000);
}
