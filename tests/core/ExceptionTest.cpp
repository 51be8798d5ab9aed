#include <qv/core/Boundary.h>
#include <qv/core/Class.h>
#include <qv/core/Exception.h>
#include <qv/core/ExternalException.h>
#include <qv/core/Reference.h>
#include <qv/io/IoException.h>
#include <qv/text/charset/CharsetExceptions.h>

#include <gtest/gtest.h>

#include <new>

using qv::Result;

namespace {

Result code(uint32_t value)
{
    return static_cast<Result>(value);
}

template <class E>
Result resultOf(const E& e)
{
    return qv::qvcom::guardBoundary([&]() -> Result { throw e; });
}

// Written as a caller subclasses: a description of its own and a code.
class DescribedException : public qv::Exception {
public:
    qv::String getDescription() override { return qv::String(u"described"); }
    Result getResult() const override { return code(0x80070002u); }
};

} // namespace

TEST(Exception, SubclassDescriptionAndCodeReachConstHandlers)
{
    try {
        throw DescribedException();
    } catch (const qv::Exception& e) {
        EXPECT_TRUE(e.getDescription().equals(u"described"));
        EXPECT_EQ(e.getResult(), code(0x80070002u));
    }
    EXPECT_EQ(resultOf(DescribedException()), code(0x80070002u));
}

TEST(Exception, BoundaryRuleTurnsThrowsIntoCodes)
{
    EXPECT_EQ(resultOf(qv::ResultException(code(0x80070057u))), code(0x80070057u));
    EXPECT_EQ(resultOf(qv::IllegalStateException(u"x")), code(0x80004005u));
    EXPECT_EQ(resultOf(std::bad_alloc()), code(0x8007000Eu));
    EXPECT_EQ(resultOf(42), code(0x80004005u));
    EXPECT_EQ(resultOf(qv::OutOfMemoryException()), code(0x8007000Eu));
    EXPECT_EQ(resultOf(qv::text::charset::UnknownEncodingException()), code(0x8BB34103u));
    EXPECT_EQ(qv::qvcom::guardBoundary([] { return 7; }), 7);
    EXPECT_EQ(qv::qvcom::guardBoundary([] {}), 0);
}

TEST(Exception, CodesAndMessages)
{
    EXPECT_EQ(qv::ResultException().getResult(), code(0x80004005u));
    EXPECT_EQ(qv::ResultException(0).getResult(), 0);
    qv::ResultException withMessage(code(0x80070002u), u"missing");
    EXPECT_TRUE(withMessage.getDescription().equals(u"missing"));
    qv::ResultException copy(withMessage);
    EXPECT_EQ(copy.getResult(), code(0x80070002u));
    qv::ResultException assigned;
    assigned = withMessage;
    EXPECT_EQ(assigned.getResult(), code(0x80070002u));
    EXPECT_TRUE(assigned.getDescription().equals(u"missing"));

    EXPECT_EQ(qv::Exception().getDescription().getLength(), 0);
    EXPECT_EQ(qv::text::charset::InvalidCharacterException().getResult(), code(0x8BB34101u));
    EXPECT_EQ(qv::text::charset::UnmappableCharacterException(u"m").getResult(), code(0x8BB34102u));
    EXPECT_EQ(qv::io::TimeoutException().getResult(), code(0x80004005u));
}

TEST(Exception, OutOfMemoryIsAlsoBadAlloc)
{
    try {
        throw qv::OutOfMemoryException();
    } catch (const std::bad_alloc& e) {
        EXPECT_STREQ(e.what(), "bad allocation");
    }
    try {
        throw qv::OutOfMemoryException();
    } catch (const qv::Exception& e) {
        EXPECT_EQ(e.getResult(), code(0x8007000Eu));
        EXPECT_EQ(e.getDescription().getLength(), 0);
    }
}

TEST(Exception, TreeIsCaughtThroughEachBase)
{
    auto caughtAsIo = [](auto thrower) {
        try {
            thrower();
        } catch (const qv::io::IoException&) {
            return true;
        } catch (const qv::Exception&) {
            return false;
        }
        return false;
    };
    EXPECT_TRUE(caughtAsIo([] { throw qv::io::TimeoutException(); }));
    // End of data is deliberately not an I/O failure.
    EXPECT_FALSE(caughtAsIo([] { throw qv::io::UnexpectedEOFException(); }));

    try {
        throw qv::IntDivByZeroException();
    } catch (const qv::IntErrorException& e) {
        EXPECT_EQ(e.getExceptionPointers(), nullptr);
    }
    try {
        throw qv::MathUnderflowException();
    } catch (const qv::ExternalException&) {
        SUCCEED();
    }
    try {
        throw qv::ReadOnlyException(u"ro");
    } catch (const qv::Object& o) {
        EXPECT_NE(dynamic_cast<const qv::ReadOnlyException*>(&o), nullptr);
    }
}

TEST(Exception, RegisteredByQualifiedNameCreatableOnlyWhereDocumented)
{
    for (const char16_t* name :
         {u"qv::Exception", u"qv::CastFailedException", u"qv::IllegalStateException", u"qv::IntDivByZeroException",
          u"qv::IntErrorException", u"qv::IntOverflowException", u"qv::OutOfMemoryException", u"qv::io::IoException",
          u"qv::io::TimeoutException", u"qv::io::UnexpectedEOFException",
          u"qv::text::charset::InvalidCharacterException", u"qv::text::charset::UnknownEncodingException"}) {
        qv::Reference<qv::Object> made(qv::Class::forName(name)->createInstance());
        EXPECT_TRUE(qv::String(made->getClass()->getName()).equals(name)) << qv::String(name).toUtf8();
    }
    for (const char16_t* name : {u"qv::ExternalException", u"qv::AccessViolationException", u"qv::UserAbortException",
                                 u"qv::MathErrorException", u"qv::MathUnderflowException"}) {
        EXPECT_THROW(qv::Class::forName(name)->createInstance(), qv::IllegalAccessException)
            << qv::String(name).toUtf8();
    }
    EXPECT_THROW(qv::Class::forName(u"qv::ResultException"), qv::ClassNotFoundException);
    EXPECT_THROW(qv::Class::forName(u"qv::util::IniFileException"), qv::ClassNotFoundException);
}
