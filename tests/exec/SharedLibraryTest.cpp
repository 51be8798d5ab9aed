#include "ExecTestSupport.h"

#include <qv/exec/SharedLibrary.h>

#include <gtest/gtest.h>

namespace {

using exectest::code;
using exectest::Thrown;
using exectest::thrownBy;
using exectest::utf16;
using qv::exec::SharedLibrary;

TEST(SharedLibrary, LoadsAnObjectAndFindsItsSymbols)
{
    const uint32_t handles = QVHandleCountOpen();
    {
        SharedLibrary library(utf16(QVCL3_TEST_PLUGIN).c_str());
        typedef int (*Answer)();
        Answer answer = reinterpret_cast<Answer>(library.getSymbol(u"qvTestPluginAnswer"));
        ASSERT_NE(answer, nullptr);
        EXPECT_EQ(answer(), 42);
        const unsigned short name[] = {'q', 'v', 'T', 'e', 's', 't', 'P', 'l', 'u', 'g',
                                       'i', 'n', 'A', 'n', 's', 'w', 'e', 'r', 0};
        EXPECT_EQ(library.getSymbol(name), reinterpret_cast<void*>(answer));

        EXPECT_EQ(thrownBy([&] { library.getSymbol(u"qvNoSuchSymbol"); }),
                  (Thrown{"ResultException", code(0x8007007F), "Failed to get symbol."}));
    }
    EXPECT_EQ(QVHandleCountOpen(), handles);
}

TEST(SharedLibrary, OpenFailuresCarryThePlatformCodeAndTheMessage)
{
    const uint32_t handles = QVHandleCountOpen();
    EXPECT_EQ(thrownBy([] { SharedLibrary library(u"/nonexistent/libnothing.so"); }),
              (Thrown{"ResultException", code(0x80070002), "Failed to open shared library."}));

    auto notAnObject = thrownBy([] { SharedLibrary library(utf16(QVCL3_TEST_NOT_A_LIBRARY).c_str()); });
    EXPECT_EQ(notAnObject.code, code(0x800700C1));
    EXPECT_EQ(notAnObject.message, "Failed to open shared library.");

    EXPECT_EQ(thrownBy([] { SharedLibrary library(static_cast<const char16_t*>(nullptr)); }).what(),
              "ResultException: Failed to open shared library.");
    EXPECT_EQ(QVHandleCountOpen(), handles);
}

} // namespace
