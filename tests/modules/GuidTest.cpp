#include <qv/core/Exception.h>
#include <qv/util/Guid.h>

#include "AllocationSweep.h"

#include <gtest/gtest.h>

#include "Thrown.h"

#include <set>
#include <string>
#include <unordered_set>

using qv::util::Guid;

namespace {

constexpr GUID kSample = {0x72038029, 0xFA65, 0x4255, {0xA9, 0x16, 0x1C, 0x56, 0x80, 0xAC, 0xFE, 0xBF}};

std::u16string text(const qv::String& value)
{
    return std::u16string(value.getData(), static_cast<size_t>(value.getLength()));
}

} // namespace

TEST(Guid, FormatsBracedUpperCaseAndParsesEitherCase)
{
    char16_t buffer[39];
    ASSERT_EQ(QVComStringFromGUID(&kSample, buffer, 39), QV_S_OK);
    EXPECT_EQ(std::u16string(buffer), u"{72038029-FA65-4255-A916-1C5680ACFEBF}");
    EXPECT_EQ(QVComStringFromGUID(&kSample, buffer, 38), QV_E_BUFFER_TOO_SMALL);

    GUID parsed{};
    ASSERT_EQ(QVComGUIDFromString(u"{72038029-fa65-4255-a916-1c5680acfebf}", &parsed), QV_S_OK);
    EXPECT_TRUE(parsed == kSample);
    EXPECT_EQ(text(Guid::parse(u"{72038029-Fa65-4255-A916-1c5680ACFEBF}").toString()),
              u"{72038029-FA65-4255-A916-1C5680ACFEBF}");
    EXPECT_EQ(Guid::parse(u"{00000000-0000-0000-C000-000000000046}"), Guid(IQVUnknown::iid));
}

TEST(Guid, RefusesEverythingButTheBracedForm)
{
    GUID parsed{};
    for (const char16_t* bad : {u"", u"72038029-FA65-4255-A916-1C5680ACFEBF", u"{72038029-FA65-4255-A916-1C5680ACFEBF",
                                u"{72038029-FA65-4255-A916-1C5680ACFEBF} ", u" {72038029-FA65-4255-A916-1C5680ACFEBF}",
                                u"(72038029-FA65-4255-A916-1C5680ACFEBF)", u"{72038029FA65-4255-A916-1C5680ACFEBF0}",
                                u"{7203802G-FA65-4255-A916-1C5680ACFEBF}", u"{72038029-FA65-4255-A916-1C5680ACFEB}",
                                u"{72038029-FA65-4255-A916-1C5680ACFEBFF}", u"{+2038029-FA65-4255-A916-1C5680ACFEBF}",
                                u"{72038029-FA65-4255-A916_1C5680ACFEBF}"}) {
        EXPECT_EQ(QVComGUIDFromString(bad, &parsed), QV_E_INVALIDARG);
        Guid out;
        EXPECT_FALSE(Guid::tryParse(bad, out));
    }
    EXPECT_EQ(QVComGUIDFromString(nullptr, &parsed), QV_E_POINTER);
    EXPECT_EQ(qvtest::resultOf<qv::ResultException>([] { Guid::parse(u"{not a guid}"); }), qv::results::INVALIDARG);
    EXPECT_THROW(Guid::parse(nullptr), qv::ResultException);
}

TEST(Guid, RandomIdentifiersAreVersionFourAndDistinct)
{
    std::unordered_set<Guid> seen;
    for (int i = 0; i < 1000; ++i) {
        const Guid guid = Guid::createRandom();
        EXPECT_EQ(guid.getVersion(), 4);
        EXPECT_EQ(guid.get().Data4[0] & 0xC0, 0x80); // the RFC 4122 variant
        EXPECT_TRUE(seen.insert(guid).second);
        EXPECT_EQ(Guid::parse(guid.toString().getData()), guid);
    }
    EXPECT_TRUE(Guid().isNull());
    EXPECT_FALSE(Guid(kSample).isNull());
}

TEST(Guid, OrdersAsItsTextAndHashesEqualValuesEqually)
{
    std::set<Guid> ordered;
    std::set<std::u16string> texts;
    for (int i = 0; i < 200; ++i) {
        const Guid guid = Guid::createRandom();
        ordered.insert(guid);
        texts.insert(text(guid.toString()));
    }
    auto t = texts.begin();
    for (const Guid& guid : ordered)
        EXPECT_EQ(text(guid.toString()), *t++);

    const GUID a = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    GUID b = a;
    b.Data4[7] = 12;
    EXPECT_LT(Guid(a).compareTo(Guid(b)), 0);
    EXPECT_EQ(Guid(a).compareTo(Guid(a)), 0);
    EXPECT_EQ(Guid(a).hashCode(), Guid(GUID(a)).hashCode());
    EXPECT_NE(Guid(a).hashCode(), Guid(b).hashCode());
    // Data1 is compared as a number, not by its little-endian bytes.
    EXPECT_LT(Guid(GUID{0x000000FF, 0, 0, {}}), Guid(GUID{0x00000100, 0, 0, {}}));
}

TEST(Guid, AllocationFailureWhileFormattingIsOutOfMemory)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "allocation faults need a fault-injection build";
    const Guid guid(kSample);
    qv::String out;
    qvtest::sweepAllocations([&] { out = guid.toString(); }, [&] { EXPECT_EQ(guid, Guid(kSample)); });
    EXPECT_EQ(text(out), u"{72038029-FA65-4255-A916-1C5680ACFEBF}");
}
