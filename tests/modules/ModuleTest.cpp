#include <qv/core/ClassFactory.h>
#include <qv/core/DllModule.h>
#include <qv/core/Reference.h>
#include <qv/util/Guid.h>
#include <qv/util/RegistryKey.h>

#include "AllocationSweep.h"
#include "TempRegistry.h"

#include <atomic>
#include <thread>

using qv::Result;
using qv::String;
using qv::qvcom::ClassData;
using qv::qvcom::ClassFactory;
using qv::qvcom::IQVClassFactory;
using qv::util::RegistryKey;

namespace {

class Widget : public qv::ComObject {
public:
    static constexpr GUID clsid = {0x0D6E1A44, 0x5B1C, 0x4C39, {0x9F, 0x7E, 0x21, 0x3A, 0x55, 0x10, 0x66, 0x01}};
    static const char16_t* GetComProgID() noexcept { return u"Test.Widget.2"; }
    static const char16_t* GetComVersionIndependentProgID() noexcept { return u"Test.Widget"; }
    static const char16_t* GetComDescription() noexcept { return u"A widget"; }
    static const char16_t* GetComObjectVersion() noexcept { return u"2.0"; }
};

class Gadget : public qv::ComObject {
public:
    static constexpr GUID clsid = {0x0D6E1A44, 0x5B1C, 0x4C39, {0x9F, 0x7E, 0x21, 0x3A, 0x55, 0x10, 0x66, 0x02}};
};

std::u16string text(const String& value)
{
    return std::u16string(value.getData() ? value.getData() : u"", static_cast<size_t>(value.getLength()));
}

std::u16string classKey(const GUID& clsid)
{
    return u"CLSID\\" + text(qv::util::Guid(clsid).toString());
}

std::u16string defaultOf(const std::u16string& path)
{
    return text(RegistryKey::classesRoot().openKey(path.c_str()).getValue(nullptr));
}

// A factory-creating function that fails until told otherwise.
std::atomic<int> g_factoryCalls{0};
std::atomic<bool> g_factoryFails{false};
Result flakyFactory(qv::qvcom::Module* module, uintptr_t context, const GUID& iid, void** ppv)
{
    ++g_factoryCalls;
    if (g_factoryFails)
        return qv::results::OUTOFMEMORY;
    return ClassFactory::CreateFactory(module, context, iid, ppv);
}

// A Widget row made by flakyFactory.
ClassData flakyWidgetRow()
{
    return {&Widget::clsid, reinterpret_cast<uintptr_t>(&qv::qvcom::ComCreator<Widget>::CreateInstance),
            flakyFactory,   nullptr,
            nullptr,        nullptr,
            nullptr,        nullptr};
}

// Records the outer object it was given.
IQVUnknown* g_seenOuter = nullptr;
Result recordingCreator(void*, IQVUnknown* outer, const GUID&, void** ppv)
{
    g_seenOuter = outer;
    *ppv = nullptr;
    return qv::results::NOAGGREGATION;
}

class ModuleTest : public qvtest::TempRegistry {
protected:
    ClassData m_table[3] = {
        QV_CLASS_DATA_ENTRY(Widget, Widget::clsid),
        QV_CLASS_DATA_ENTRY(Gadget, Gadget::clsid),
        QV_CLASS_DATA_END,
    };
};

} // namespace

TEST(Module, EmptyTablesAndNullOutputsGiveTheirCodes)
{
    ClassData empty[] = {QV_CLASS_DATA_END};
    qv::qvcom::Module module(empty);
    void* out = &module;
    EXPECT_EQ(module.GetClassObject(Widget::clsid, IQVUnknown::iid, &out), qv::results::CLASSNOTAVAILABLE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(module.GetClassObject(Widget::clsid, IQVUnknown::iid, nullptr), qv::results::POINTER);
    qv::qvcom::Module none;
    EXPECT_EQ(none.GetClassObject(Widget::clsid, IQVUnknown::iid, &out), qv::results::CLASSNOTAVAILABLE);
    EXPECT_EQ(none.CanUnloadNow(), 0);
}

TEST_F(ModuleTest, OneFactoryPerRowIsSharedAndItsObjectsHoldTheModule)
{
    qv::qvcom::Module module(m_table);
    qv::Reference<IQVClassFactory> first;
    qv::Reference<IQVClassFactory> second;
    ASSERT_EQ(module.GetClassObject(Widget::clsid, IQVClassFactory::iid, first.putVoid()), 0);
    ASSERT_EQ(module.GetClassObject(Widget::clsid, IQVClassFactory::iid, second.putVoid()), 0);
    EXPECT_EQ(first.get(), second.get());
    qv::Reference<IQVClassFactory> other;
    ASSERT_EQ(module.GetClassObject(Gadget::clsid, IQVClassFactory::iid, other.putVoid()), 0);
    EXPECT_NE(first.get(), other.get());
    void* out = &module;
    const GUID unknownClass = {1, 2, 3, {4}};
    EXPECT_EQ(module.GetClassObject(unknownClass, IQVClassFactory::iid, &out), qv::results::CLASSNOTAVAILABLE);
    EXPECT_EQ(out, nullptr);
    // Cached factories do not keep the module.
    EXPECT_EQ(module.CanUnloadNow(), 0);

    {
        qv::Reference<IQVUnknown> object;
        ASSERT_EQ(first->CreateInstance(nullptr, IQVUnknown::iid, object.putVoid()), 0);
        EXPECT_EQ(module.GetLockCount(), 1);
        EXPECT_EQ(module.CanUnloadNow(), 1);
    }
    EXPECT_EQ(module.CanUnloadNow(), 0);
}

TEST_F(ModuleTest, LockServerCountsAndCreateInstanceKeepsTheAggregationRule)
{
    qv::qvcom::Module module(m_table);
    qv::Reference<IQVClassFactory> factory;
    ASSERT_EQ(module.GetClassObject(Widget::clsid, IQVClassFactory::iid, factory.putVoid()), 0);
    EXPECT_EQ(factory->LockServer(1), 0);
    EXPECT_EQ(factory->LockServer(1), 0);
    EXPECT_EQ(factory->LockServer(0), 0);
    EXPECT_EQ(module.CanUnloadNow(), 1);
    EXPECT_EQ(factory->LockServer(0), 0);
    EXPECT_EQ(module.CanUnloadNow(), 0);

    EXPECT_EQ(factory->CreateInstance(nullptr, IQVUnknown::iid, nullptr), qv::results::POINTER);
    Widget outer;
    void* out = &module;
    EXPECT_EQ(factory->CreateInstance(&outer, IQVClassFactory::iid, &out), qv::results::INVALIDARG);
    EXPECT_EQ(out, nullptr);
    // Widget refuses aggregation itself, past the factory's own check.
    EXPECT_EQ(factory->CreateInstance(&outer, IQVUnknown::iid, &out), qv::results::NOAGGREGATION);

    ClassFactory recording(&module, recordingCreator, nullptr);
    EXPECT_EQ(recording.CreateInstance(&outer, IQVUnknown::iid, &out), qv::results::NOAGGREGATION);
    EXPECT_EQ(g_seenOuter, &outer);
}

TEST_F(ModuleTest, AFailedFactoryIsNotCachedAndTheNextRequestRetries)
{
    ClassData table[] = {flakyWidgetRow(), QV_CLASS_DATA_END};
    qv::qvcom::Module module(table);
    g_factoryCalls = 0;
    g_factoryFails = true;
    void* out = nullptr;
    EXPECT_EQ(module.GetClassObject(Widget::clsid, IQVUnknown::iid, &out), qv::results::OUTOFMEMORY);
    EXPECT_EQ(table[0].pFactory.load(), nullptr);
    g_factoryFails = false;
    qv::Reference<IQVUnknown> factory;
    EXPECT_EQ(module.GetClassObject(Widget::clsid, IQVUnknown::iid, factory.putVoid()), 0);
    EXPECT_EQ(module.GetClassObject(Widget::clsid, IQVUnknown::iid, factory.putVoid()), 0);
    EXPECT_EQ(g_factoryCalls, 2);
}

TEST_F(ModuleTest, ConcurrentFirstRequestsMakeOneFactory)
{
    ClassData table[] = {flakyWidgetRow(), QV_CLASS_DATA_END};
    qv::qvcom::Module module(table);
    g_factoryCalls = 0;
    g_factoryFails = false;
    void* seen[8] = {};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&, i] { EXPECT_EQ(module.GetClassObject(Widget::clsid, IQVUnknown::iid, &seen[i]), 0); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(g_factoryCalls, 1);
    for (void* factory : seen) {
        EXPECT_EQ(factory, seen[0]);
        static_cast<IQVUnknown*>(factory)->Release();
    }
}

TEST_F(ModuleTest, RegistrationWritesTheKeyLayoutAndUnregistrationRemovesIt)
{
    qv::qvcom::DllModule module(m_table);
    const std::u16string path = u"/opt/test/libwidget.so";
    ASSERT_EQ(module.RegisterServer(reinterpret_cast<const unsigned short*>(path.c_str())), 0);
    const std::u16string widget = classKey(Widget::clsid);
    const std::u16string widgetText = text(qv::util::Guid(Widget::clsid).toString());
    EXPECT_EQ(defaultOf(u"Test.Widget.2\\CLSID"), widgetText);
    EXPECT_EQ(defaultOf(u"Test.Widget.2"), u"A widget");
    EXPECT_EQ(defaultOf(widget), u"A widget");
    EXPECT_EQ(defaultOf(widget + u"\\ProgID"), u"Test.Widget.2");
    EXPECT_EQ(defaultOf(widget + u"\\VersionIndependentProgID"), u"Test.Widget");
    EXPECT_EQ(defaultOf(widget + u"\\Version"), u"2.0");
    EXPECT_EQ(defaultOf(widget + u"\\InprocServer32"), u"/opt/test/libwidget.so");
    EXPECT_EQ(defaultOf(u"Test.Widget\\CLSID"), widgetText);
    EXPECT_EQ(defaultOf(u"Test.Widget\\CurVer"), u"Test.Widget.2");
    // Gadget has no texts: its class key, empty ProgIDs and its module.
    const RegistryKey gadget = RegistryKey::classesRoot().openKey(classKey(Gadget::clsid).c_str());
    String name;
    const char16_t* const gadgetKeys[] = {u"InprocServer32", u"ProgID", u"VersionIndependentProgID"};
    for (uint32_t i = 0; i < 3; ++i) {
        ASSERT_TRUE(gadget.enumSubKey(i, name));
        EXPECT_EQ(text(name), gadgetKeys[i]);
    }
    EXPECT_FALSE(gadget.enumSubKey(3, name));
    EXPECT_EQ(defaultOf(classKey(Gadget::clsid) + u"\\ProgID"), u"");
    EXPECT_EQ(defaultOf(classKey(Gadget::clsid) + u"\\VersionIndependentProgID"), u"");
    EXPECT_FALSE(gadget.hasValue(nullptr));

    GUID resolved{};
    EXPECT_EQ(QVComClassIDFromProgID(u"test.widget", &resolved), 0);
    EXPECT_TRUE(resolved == Widget::clsid);

    // Someone else takes the version-independent ProgID over: it stays.
    RegistryKey::classesRoot()
        .createKey(u"Test.Widget\\CLSID")
        .setValue(nullptr, String(u"{00000000-0000-0000-0000-000000000001}"));
    ASSERT_EQ(module.UnregisterServer(), 0);
    const RegistryKey root = RegistryKey::classesRoot();
    EXPECT_FALSE(root.hasKey(widget.c_str()));
    EXPECT_FALSE(root.hasKey(classKey(Gadget::clsid).c_str()));
    EXPECT_FALSE(root.hasKey(u"Test.Widget.2"));
    EXPECT_TRUE(root.hasKey(u"Test.Widget"));
    EXPECT_EQ(module.UnregisterServer(), 0); // nothing left to remove
}

TEST_F(ModuleTest, APlainModuleWritesNoServerAndRegistryFailuresBecomeCodes)
{
    qv::qvcom::Module module(m_table);
    ASSERT_EQ(module.RegisterServer(u"/ignored.so"), 0);
    EXPECT_FALSE(RegistryKey::classesRoot().hasKey((classKey(Widget::clsid) + u"\\InprocServer32").c_str()));

    // A store that cannot be written: its folder is a file.
    std::fclose(std::fopen((m_dir + "/blocked").c_str(), "w"));
    setenv("QV_REGISTRY_DIR", (m_dir + "/blocked").c_str(), 1);
    EXPECT_LT(module.RegisterServer(u"/ignored.so"), 0);
    setenv("QV_REGISTRY_DIR", m_dir.c_str(), 1);
}

TEST_F(ModuleTest, AllocationFailuresDuringRegistrationAreOutOfMemory)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "allocation faults need a fault-injection build";
    qv::qvcom::DllModule module(m_table);
    int failures = 0;
    for (int n = 1;; ++n) {
        QVFaultArmAllocation(n);
        const Result result = module.RegisterServer(u"/opt/test/libwidget.so");
        QVFaultDisarmAll();
        if (result == 0)
            break;
        ASSERT_EQ(result, qv::results::OUTOFMEMORY) << "allocation " << n;
        ++failures;
    }
    EXPECT_GT(failures, 0);
    EXPECT_EQ(defaultOf(classKey(Widget::clsid) + u"\\InprocServer32"), u"/opt/test/libwidget.so");
}
