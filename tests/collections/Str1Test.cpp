#include "AllocationSweep.h"
#include "TestElements.h"
#include "Thrown.h"

#include <qv/core/Exception.h>
#include <qv/lang/Str1.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>

using qv::Result;
using qv::Str1;
using qv::StrBuf1;
namespace results = qv::results;

namespace {

std::u16string text(const Str1& s)
{
    return std::u16string(s.getData(), static_cast<size_t>(s.getLength()));
}

} // namespace

TEST(Str1Value, CopyMoveAndAppend)
{
    Str1 empty;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(empty.getData()[0], u'\0');
    Str1 a(u"Hello");
    Str1 b(a);
    EXPECT_EQ(b.append(u", world"), results::OK);
    EXPECT_EQ(text(a), u"Hello");
    EXPECT_EQ(text(b), u"Hello, world");
    EXPECT_EQ(b.append(b), results::OK);
    EXPECT_EQ(text(b), u"Hello, worldHello, world");
    EXPECT_EQ(b.getData()[b.getLength()], u'\0');
    EXPECT_EQ(b.getCapacity() % 16, 0);

    Str1 moved(std::move(b));
    EXPECT_EQ(moved.getLength(), 24);
    EXPECT_TRUE(b.isEmpty());
    a = moved;
    EXPECT_TRUE(a == moved);
    EXPECT_EQ(a.assign(u"abc", 2), results::OK);
    EXPECT_EQ(text(a), u"ab");
    EXPECT_EQ(a.assign(static_cast<const char16_t*>(nullptr)), results::OK);
    EXPECT_TRUE(a.isEmpty());
    EXPECT_EQ(a.append(u"x", -5), results::INVALIDARG);
    EXPECT_THROW(Str1(u"x", -7), qv::ResultException);
    const unsigned short wide[] = {u'o', u'k', 0};
    EXPECT_TRUE(Str1(wide).equals(u"ok"));
}

TEST(Str1Value, CompareHashAndCase)
{
    Str1 upper(u"ÄBC");
    Str1 lower(u"äbc");
    EXPECT_FALSE(upper.equals(lower));
    EXPECT_TRUE(upper.equals(lower, true));
    EXPECT_EQ(upper.hashCode(true), lower.hashCode(true));
    EXPECT_NE(upper.hashCode(), lower.hashCode());
    EXPECT_EQ(Str1(u"ab").hashCode(), 31u * u'a' + u'b');
    EXPECT_LT(Str1(u"ab").compare(Str1(u"abc")), 0);
    EXPECT_GT(Str1(u"abc").compare(Str1(u"ab")), 0) << "the longer of two with one prefix sorts last";
    EXPECT_GT(Str1(u"b").compare(Str1(u"abc")), 0);
    EXPECT_EQ(Str1(u"ABC").compare(u"abc", 3, true), 0);
    EXPECT_TRUE(Str1(u"a") < Str1(u"b"));
    EXPECT_FALSE(Str1(u"ab").equals(u"abc", 3, false));
    EXPECT_TRUE(Str1(u"ab").equals(u"abc", 2, false));
    EXPECT_TRUE(Str1(u"AB").equals(u"abc", 2, true));
    Str1 mixed(u"MiXeD ΣΑ");
    EXPECT_EQ(text(mixed.toLower()), u"mixed σα");
    EXPECT_EQ(text(mixed.toUpper()), u"MIXED ΣΑ");
}

TEST(StrBuf1Value, OverflowReportsBufferTooSmall)
{
    StrBuf1<8> buffer(u"abc");
    EXPECT_FALSE(buffer.canGrow());
    EXPECT_EQ(buffer.getCapacity(), 8);
    EXPECT_EQ(buffer.append(u"defgh"), results::OK);
    EXPECT_EQ(text(buffer), u"abcdefgh");
    EXPECT_EQ(buffer.append(u'i'), results::BUFFER_TOO_SMALL);
    EXPECT_EQ(buffer.assign(u"0123456789"), results::BUFFER_TOO_SMALL);
    EXPECT_EQ(buffer.reserve(9), results::BUFFER_TOO_SMALL);
    EXPECT_EQ(text(buffer), u"abcdefgh");
    EXPECT_EQ(buffer.getData()[8], u'\0');

    EXPECT_EQ(qvtest::resultOf([] { StrBuf1<4> small(u"too long"); }), results::BUFFER_TOO_SMALL);
    Str1 longer(u"more than four");
    StrBuf1<4> target(u"ok");
    EXPECT_THROW(target = longer, qv::ResultException);
    Str1& asBase = target;
    EXPECT_THROW(asBase = longer, qv::ResultException);
    EXPECT_EQ(text(target), u"ok");

    // Copies keep their own storage.
    StrBuf1<8> copy(buffer);
    copy.clear();
    EXPECT_EQ(text(buffer), u"abcdefgh");
    Str1 heap(std::move(buffer));
    EXPECT_EQ(text(heap), u"abcdefgh");
    EXPECT_EQ(text(buffer), u"abcdefgh");
}

TEST(Str1Value, FailedAllocationLeavesTheStringUnchanged)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "the platform layer was built without fault injection";
    Str1 value(u"0123456789abcde");
    EXPECT_GT(qvtest::sweepAllocations(
                  [&] {
                      const Result code = value.append(u"overflowing the first sixteen");
                      if (code == results::OUTOFMEMORY)
                          throw qv::OutOfMemoryException();
                      EXPECT_EQ(code, results::OK);
                  },
                  [&] { EXPECT_EQ(text(value), u"0123456789abcde"); }),
              0);
    EXPECT_GT(qvtest::sweepAllocations([] { Str1 copy(u"copy"); }, [] {}), 0);
}
