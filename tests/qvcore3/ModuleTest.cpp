#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace {

int FunctionInTheTestProgram()
{
    return 1;
}

TEST(Module, MissingOrUnloadableLibrariesFailWithACode)
{
    QVHANDLE library = QV_INVALID_HANDLE;
    EXPECT_EQ(QVModuleLibOpen(QV_INVALID_HANDLE, u"/nonexistent/libnothing.so", &library), QV_E_FILE_NOT_FOUND);
    EXPECT_EQ(QVModuleLibOpen(QV_INVALID_HANDLE, u"libqvcore3-no-such-library.so", &library), QV_E_FILE_NOT_FOUND);
    EXPECT_EQ(QVModuleLibOpen(QV_INVALID_HANDLE, u"/", &library), static_cast<QVRESULT>(0x80070015)); // EISDIR

    const std::string text = "/tmp/" + qvtest::uniqueName("not-a-library") + ".so";
    FILE* file = std::fopen(text.c_str(), "w");
    ASSERT_NE(file, nullptr);
    std::fputs("plain text\n", file);
    std::fclose(file);
    const std::u16string path = qvtest::utf16(text);
    EXPECT_EQ(QVModuleLibOpen(QV_INVALID_HANDLE, path.c_str(), &library), static_cast<QVRESULT>(0x800700C1));
    std::remove(text.c_str());

    EXPECT_EQ(QVModuleLibOpen(QV_INVALID_HANDLE, u"", &library), QV_E_INVALIDARG);
    EXPECT_EQ(QVModuleLibOpen(QV_INVALID_HANDLE, nullptr, &library), QV_E_POINTER);
    EXPECT_EQ(QVModuleLibOpen(0x12345, u"libm.so.6", &library), QV_E_INVALIDARG); // not a module handle
}

TEST(Module, OpenLookUpAndClose)
{
    QVHANDLE self = QV_INVALID_HANDLE;
    ASSERT_EQ(QVModuleGetHandle(reinterpret_cast<const void*>(&FunctionInTheTestProgram), &self), QV_S_OK);
    QVHANDLE library = QV_INVALID_HANDLE;
    ASSERT_EQ(QVModuleLibOpen(self, u"libm.so.6", &library), QV_S_OK);
    void* address = nullptr;
    ASSERT_EQ(QVLibGetSymbol(library, u"cos", &address), QV_S_OK);
    ASSERT_NE(address, nullptr);
    EXPECT_EQ(reinterpret_cast<double (*)(double)>(address)(0.0), 1.0);
    EXPECT_EQ(QVLibGetSymbol(library, u"no_such_symbol_here", &address), static_cast<QVRESULT>(0x8007007F));
    EXPECT_EQ(QVLibGetSymbol(library, nullptr, &address), QV_E_POINTER);
    EXPECT_EQ(QVLibGetSymbol(library, u"cos", nullptr), QV_E_POINTER);
    EXPECT_EQ(QVModuleLibClose(library), QV_S_OK);
    EXPECT_EQ(QVModuleLibClose(library), QV_E_INVALIDARG);
    EXPECT_EQ(QVLibGetSymbol(library, u"cos", &address), QV_E_INVALIDARG);
}

TEST(Module, OneHandlePerModuleWithItsOwnInitialisedFlag)
{
    QVHANDLE program = QV_INVALID_HANDLE;
    QVHANDLE programAgain = QV_INVALID_HANDLE;
    QVHANDLE platform = QV_INVALID_HANDLE;
    ASSERT_EQ(QVModuleGetHandle(reinterpret_cast<const void*>(&FunctionInTheTestProgram), &program), QV_S_OK);
    ASSERT_EQ(QVModuleGetHandle(reinterpret_cast<const void*>(&qvtest::MillisecondsSince), &programAgain), QV_S_OK);
    ASSERT_EQ(QVModuleGetHandle(reinterpret_cast<const void*>(&QVMutexCreate), &platform), QV_S_OK);
    EXPECT_EQ(program, programAgain);
    EXPECT_NE(program, platform);

    EXPECT_EQ(QVModuleIsInitialized(platform), 0);
    ASSERT_EQ(QVModuleSetInitialized(platform, 1), QV_S_OK);
    EXPECT_EQ(QVModuleIsInitialized(platform), 1);
    EXPECT_EQ(QVModuleIsInitialized(program), 0);
    ASSERT_EQ(QVModuleSetInitialized(platform, 0), QV_S_OK);
    EXPECT_EQ(QVModuleIsInitialized(platform), 0);

    int onTheStack = 0;
    QVHANDLE none = QV_INVALID_HANDLE;
    EXPECT_EQ(QVModuleGetHandle(&onTheStack, &none), QV_E_INVALIDARG);
    EXPECT_EQ(QVModuleGetHandle(nullptr, &none), QV_E_POINTER);
    EXPECT_EQ(QVModuleSetInitialized(QV_INVALID_HANDLE, 1), QV_E_INVALIDARG);
}

} // namespace
