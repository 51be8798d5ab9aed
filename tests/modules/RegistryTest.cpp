#include <qv/core/DllModule.h>
#include <qv/core/Exception.h>
#include <qv/util/Guid.h>
#include <qv/util/RegistryKey.h>

#include "AllocationSweep.h"
#include "KillPattern.h"
#include "TempRegistry.h"
#include "Thrown.h"

#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <random>
#include <set>
#include <thread>

using qv::String;
using qv::util::RegistryKey;

namespace {

class Registry : public qvtest::TempRegistry {};

using qvtest::resultOf;

std::set<std::u16string> subKeys(const RegistryKey& key)
{
    std::set<std::u16string> names;
    String name;
    for (uint32_t i = 0; key.enumSubKey(i, name); ++i)
        names.insert(std::u16string(name.getData(), static_cast<size_t>(name.getLength())));
    return names;
}

std::u16string text(const String& value)
{
    return std::u16string(value.getData() ? value.getData() : u"", static_cast<size_t>(value.getLength()));
}

} // namespace

TEST_F(Registry, KeysAndValuesRoundTripAndNamesIgnoreAsciiCase)
{
    const RegistryKey root = RegistryKey::currentUser();
    const RegistryKey key = root.createKey(u"Software\\Qv\\Test");
    key.setValue(nullptr, String(u"default"));
    key.setValue(u"Name", String(u"first"));
    key.setValue(u"NAME", String(u"second")); // same value, keeps its first spelling
    const char16_t withNul[] = {u'a', 0, u'b'};
    key.setValue(u"Binary", String(withNul, 3));

    EXPECT_TRUE(root.hasKey(u"SOFTWARE\\qv\\tEST"));
    const RegistryKey again = root.openKey(u"software\\QV\\test");
    EXPECT_EQ(text(again.getValue(u"")), u"default");
    EXPECT_EQ(text(again.getValue(u"name")), u"second");
    EXPECT_EQ(text(again.getValue(u"binary")), std::u16string(withNul, 3));

    String name;
    std::vector<std::u16string> values;
    for (uint32_t i = 0; again.enumValue(i, name); ++i)
        values.push_back(text(name));
    EXPECT_EQ(values, (std::vector<std::u16string>{u"", u"Binary", u"Name"}));

    again.deleteValue(u"NAME");
    EXPECT_FALSE(again.hasValue(u"Name"));
    EXPECT_EQ(resultOf([&] { again.getValue(u"Name"); }), qv::results::FILE_NOT_FOUND);
    EXPECT_EQ(resultOf([&] { again.openKey(u"Missing"); }), qv::results::FILE_NOT_FOUND);
}

TEST_F(Registry, SubkeysEnumerateInCaseInsensitiveOrderAndDeleteWithTheirTree)
{
    const RegistryKey root = RegistryKey::classesRoot();
    for (const char16_t* name : {u"beta", u"Alpha", u"gamma\\deep\\deeper", u".ext", u"@at", u"%pct"})
        root.createKey(name).setValue(u"v", String(u"x"));
    root.createKey(u"ALPHA"); // already there
    EXPECT_EQ(subKeys(root), (std::set<std::u16string>{u".ext", u"@at", u"%pct", u"Alpha", u"beta", u"gamma"}));
    String first;
    ASSERT_TRUE(root.enumSubKey(0, first));
    EXPECT_EQ(text(first), u"%pct"); // '%' < '.' < '@' < letters, case ignored

    root.deleteKey(u"GAMMA");
    EXPECT_FALSE(root.hasKey(u"gamma\\deep"));
    EXPECT_EQ(subKeys(root).count(u"gamma"), 0u);
    EXPECT_EQ(resultOf([&] { root.deleteKey(u"gamma"); }), qv::results::FILE_NOT_FOUND);
    // A key whose name starts like a value file is a key, not a value.
    EXPECT_EQ(text(root.openKey(u"@AT").getValue(u"v")), u"x");
    EXPECT_FALSE(root.hasValue(u"at"));
}

TEST_F(Registry, NamesThatWouldLeaveTheStoreAreRefused)
{
    const RegistryKey root = RegistryKey::currentUser();
    QVHANDLE handle = QV_INVALID_HANDLE;
    for (const char16_t* bad : {u"..", u".", u"a\\..", u"..\\x", u"a/b", u"/etc", u"a\\\\b", u"\\a", u"a\\"}) {
        EXPECT_EQ(QVRegistryCreateKey(QV_HKEY_CURRENT_USER, bad, &handle), QV_E_INVALIDARG)
            << std::string(bad, bad + std::char_traits<char16_t>::length(bad));
        EXPECT_EQ(QVRegistryDeleteKey(QV_HKEY_CURRENT_USER, bad), QV_E_INVALIDARG);
    }
    const char16_t lone[] = {u'a', 0xD800, 0};
    EXPECT_EQ(QVRegistryCreateKey(QV_HKEY_CURRENT_USER, lone, &handle), QV_E_INVALIDARG);
    EXPECT_EQ(QVRegistryCreateKey(QV_HKEY_CURRENT_USER, std::u16string(256, u'k').c_str(), &handle), QV_E_INVALIDARG);
    EXPECT_EQ(QVRegistrySetValue(QV_HKEY_CURRENT_USER, u"a/b", u"x", -1), QV_E_INVALIDARG);
    EXPECT_EQ(QVRegistryDeleteKey(QV_HKEY_CURRENT_USER, u""), QV_E_INVALIDARG);
    // Nothing was made outside the store, nor inside it.
    struct stat status;
    EXPECT_NE(stat((m_dir + "/../a").c_str(), &status), 0);
    EXPECT_TRUE(subKeys(root).empty());
    // 255 units is still a name.
    EXPECT_NO_THROW(root.createKey(std::u16string(255, u'k').c_str()));
}

TEST_F(Registry, BadHandlesAndShortBuffersGiveTheirCodes)
{
    const RegistryKey key = RegistryKey::currentUser().createKey(u"K");
    key.setValue(u"v", String(u"hello"));
    char16_t small[5];
    int32_t length = -1;
    EXPECT_EQ(QVRegistryGetValue(key.getHandle(), u"v", small, 5, &length), QV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(length, 5);
    char16_t enough[6];
    EXPECT_EQ(QVRegistryGetValue(key.getHandle(), u"v", enough, 6, &length), QV_S_OK);
    EXPECT_EQ(std::u16string(enough), u"hello");
    EXPECT_EQ(QVRegistryEnumKey(key.getHandle(), 0, enough, 6, &length), QV_E_NO_MORE_ITEMS);
    EXPECT_EQ(QVRegistryGetValue(12345, u"v", enough, 6, &length), QV_E_INVALIDARG);
    EXPECT_EQ(QVRegistryOpenKey(QV_HKEY_CURRENT_USER, u"K", nullptr), QV_E_POINTER);
    EXPECT_EQ(QVRegistryGetValue(key.getHandle(), u"v", nullptr, 6, &length), QV_E_POINTER);
}

TEST_F(Registry, ADamagedValueFileIsReportedNotTrusted)
{
    const RegistryKey key = RegistryKey::currentUser().createKey(u"Damaged");
    key.setValue(u"v", String(u"a value long enough to damage"));
    const std::string file = onDisk("CurrentUser/Damaged/@v");
    std::string bytes;
    {
        std::ifstream in(file, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(in), {});
    }
    ASSERT_GT(bytes.size(), 20u);
    for (size_t cut : {size_t{0}, size_t{7}, bytes.size() - 1}) {
        std::ofstream(file, std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(cut));
        EXPECT_EQ(QVRegistryGetValue(key.getHandle(), u"v", nullptr, 0, nullptr), QV_E_INVALID_DATA) << cut;
    }
    std::string flipped = bytes;
    flipped[14] ^= 0x01;
    std::ofstream(file, std::ios::binary | std::ios::trunc)
        .write(flipped.data(), static_cast<std::streamsize>(flipped.size()));
    EXPECT_EQ(resultOf([&] { key.getValue(u"v"); }), QV_E_INVALID_DATA);
    key.setValue(u"v", String(u"mended"));
    EXPECT_EQ(text(key.getValue(u"v")), u"mended");
}

TEST_F(Registry, AllocationFailuresLeaveTheStoreAsItWas)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "allocation faults need a fault-injection build";
    const RegistryKey root = RegistryKey::currentUser();
    root.createKey(u"Swept").setValue(u"v", String(u"old"));
    const int failures = qvtest::sweepAllocations(
        [&] {
            const RegistryKey key = root.createKey(u"Swept\\Child");
            key.setValue(u"v", String(u"new"));
            EXPECT_EQ(text(root.openKey(u"Swept").getValue(u"v")), u"old");
            String name;
            ASSERT_TRUE(root.enumSubKey(0, name));
        },
        [&] { EXPECT_EQ(text(root.openKey(u"Swept").getValue(u"v")), u"old"); });
    EXPECT_GT(failures, 0);
}

// Eight processes register and unregister their own class 200 times, all
// through the one store, and finish registered.
TEST_F(Registry, ConcurrentProcessesLeaveExactlyTheExpectedKeys)
{
    constexpr int kProcesses = 8;
    std::vector<pid_t> children;
    for (int i = 0; i < kProcesses; ++i) {
        children.push_back(qvtest::spawn({QVTEST_REGISTRY_CHILD, "churn", std::to_string(i), "200"}));
        ASSERT_GT(children.back(), 0);
    }
    for (pid_t child : children)
        EXPECT_EQ(qvtest::waitExit(child), 0);

    const RegistryKey root = RegistryKey::classesRoot();
    std::set<std::u16string> expectedRoot{u"CLSID"};
    std::set<std::u16string> expectedClasses;
    for (int i = 0; i < kProcesses; ++i) {
        expectedRoot.insert(qvtest::churnProgId(i, true));
        expectedRoot.insert(qvtest::churnProgId(i, false));
        const String clsid = qv::util::Guid(qvtest::churnClassId(i)).toString();
        expectedClasses.insert(text(clsid));
        const RegistryKey classKey = root.openKey((u"CLSID\\" + text(clsid)).c_str());
        EXPECT_EQ(subKeys(classKey),
                  (std::set<std::u16string>{u"InprocServer32", u"ProgID", u"VersionIndependentProgID"}));
        EXPECT_EQ(text(classKey.openKey(u"ProgID").getValue(nullptr)), qvtest::churnProgId(i, true));
        EXPECT_EQ(text(root.openKey(qvtest::churnProgId(i, false).c_str()).openKey(u"CurVer").getValue(nullptr)),
                  qvtest::churnProgId(i, true));
    }
    EXPECT_EQ(subKeys(root), expectedRoot);
    EXPECT_EQ(subKeys(root.openKey(u"CLSID")), expectedClasses);
}

// A writer killed at random moments leaves every value either whole or as
// it was before, never torn.
TEST_F(Registry, AWriterKilledMidWriteNeverLeavesATornValue)
{
    std::mt19937 random(20261124);
    const std::string ready = m_dir + "/ready";
    int seen = 0;
    for (int round = 0; round < 12; ++round) {
        std::remove(ready.c_str());
        const pid_t child = qvtest::spawn({QVTEST_REGISTRY_CHILD, "write", "ready", ready});
        ASSERT_GT(child, 0);
        struct stat status;
        while (stat(ready.c_str(), &status) != 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 30000));
        kill(child, SIGKILL);
        int exitStatus = 0;
        waitpid(child, &exitStatus, 0);
        ASSERT_TRUE(WIFSIGNALED(exitStatus));

        const RegistryKey key = RegistryKey::currentUser().openKey(u"Kill");
        for (uint32_t n = 0; n < 8; ++n) {
            const std::u16string name = qvtest::killValueName(n);
            if (!key.hasValue(name.c_str()))
                continue;
            EXPECT_TRUE(qvtest::isWholeKillValue(text(key.getValue(name.c_str())))) << "round " << round;
            ++seen;
        }
    }
    EXPECT_GT(seen, 12);
}
