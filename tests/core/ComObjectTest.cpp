#include <qv/core/ComObject.h>
#include <qv/core/Module.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>

#include <gtest/gtest.h>

#include <thread>

namespace {

struct IFirst : IQVUnknown {
    static constexpr GUID iid = {0x11111111, 0x1111, 0x1111, {1, 1, 1, 1, 1, 1, 1, 1}};
    virtual int first() = 0;
};
struct ISecond : IQVUnknown {
    static constexpr GUID iid = {0x22222222, 0x2222, 0x2222, {2, 2, 2, 2, 2, 2, 2, 2}};
    virtual int second() = 0;
};
const GUID kByFunction = {0x33333333, 0x3333, 0x3333, {3, 3, 3, 3, 3, 3, 3, 3}};
const GUID kFailingFunction = {0x44444444, 0x4444, 0x4444, {4, 4, 4, 4, 4, 4, 4, 4}};
const GUID kUnknownToAll = {0x55555555, 0x5555, 0x5555, {5, 5, 5, 5, 5, 5, 5, 5}};

int g_functionCalls = 0;

qv::Result answerWithSecond(void* pThis, const GUID&, void** ppv, uintptr_t dw)
{
    ++g_functionCalls;
    auto* self = static_cast<qv::ComObject*>(pThis);
    auto* found = reinterpret_cast<IQVUnknown*>(reinterpret_cast<char*>(self) + dw);
    found->AddRef();
    *ppv = found;
    return 0;
}

qv::Result failWith(void*, const GUID&, void** ppv, uintptr_t dw)
{
    ++g_functionCalls;
    *ppv = nullptr;
    return static_cast<qv::Result>(dw);
}

class Widget : public qv::Object, public IFirst, public ISecond {
    QV_DECLARE_INTERFACE_MAP()
public:
    int first() override { return 1; }
    int second() override { return 2; }
};

QV_BEGIN_INTERFACE_MAP(Widget)
QV_INTERFACE_ENTRY(Widget, IFirst){&kByFunction, reinterpret_cast<uintptr_t>(&answerWithSecond),
                                   qv::qvcom::interfaceOffset<Widget, ISecond>()},
    {&kFailingFunction, reinterpret_cast<uintptr_t>(&failWith), static_cast<uintptr_t>(0x80070057u)},
    // A chaining row that fails must not stop the walk...
    {nullptr, reinterpret_cast<uintptr_t>(&failWith), static_cast<uintptr_t>(0x80004005u)},
    QV_INTERFACE_ENTRY(Widget, ISecond)
    // ...and the base's rows are still reached after it.
    QV_INTERFACE_CHAIN(qv::Object) QV_END_INTERFACE_MAP()

        class Bare : public qv::ComObject {
public:
    static const qv::qvcom::InterfaceData* GetComIntfMap()
    {
        static const qv::qvcom::InterfaceData map[] = {{nullptr, 0, 0}};
        return map;
    }
    qv::Result QueryInterface(const GUID& iid, void** ppv) override
    {
        return qv::qvcom::QueryInterfaceMap(GetComIntfMap(), this, iid, ppv);
    }
};

} // namespace

TEST(InterfaceMap, OffsetFunctionAndChainingRows)
{
    qv::Reference<Widget> w(new Widget);
    void* p = nullptr;

    ASSERT_EQ(w->QueryInterface(IQVUnknown::iid, &p), 0);
    EXPECT_EQ(p, static_cast<IQVUnknown*>(static_cast<qv::ComObject*>(w.get())));
    EXPECT_EQ(w->GetRefCount(), 2);
    static_cast<IQVUnknown*>(p)->Release();

    ASSERT_EQ(w->QueryInterface(IFirst::iid, &p), 0);
    EXPECT_EQ(static_cast<IFirst*>(p)->first(), 1);
    static_cast<IFirst*>(p)->Release();

    g_functionCalls = 0;
    ASSERT_EQ(w->QueryInterface(kByFunction, &p), 0);
    EXPECT_EQ(static_cast<ISecond*>(p)->second(), 2);
    EXPECT_EQ(g_functionCalls, 1);
    static_cast<ISecond*>(p)->Release();

    // A matching function row that fails ends the walk with its code.
    g_functionCalls = 0;
    p = &p;
    EXPECT_EQ(w->QueryInterface(kFailingFunction, &p), static_cast<qv::Result>(0x80070057u));
    EXPECT_EQ(g_functionCalls, 1);

    // The failing chaining row is passed; ISecond's offset row answers.
    g_functionCalls = 0;
    ASSERT_EQ(w->QueryInterface(ISecond::iid, &p), 0);
    EXPECT_EQ(g_functionCalls, 1);
    EXPECT_EQ(static_cast<ISecond*>(p), static_cast<ISecond*>(w.get()));
    static_cast<ISecond*>(p)->Release();

    ASSERT_EQ(w->QueryInterface(IQVComparable::iid, &p), 0);
    EXPECT_EQ(p, static_cast<IQVComparable*>(w.get()));
    static_cast<IQVComparable*>(p)->Release();

    p = &p;
    EXPECT_EQ(w->QueryInterface(kUnknownToAll, &p), static_cast<qv::Result>(0x80004002u));
    EXPECT_EQ(p, nullptr);
    EXPECT_EQ(w->QueryInterface(IFirst::iid, nullptr), static_cast<qv::Result>(0x80004003u));
    EXPECT_EQ(w->GetRefCount(), 1);
}

TEST(InterfaceMap, EmptyMapAnswersOnlyUnknown)
{
    qv::Reference<Bare> b(new Bare);
    void* p = &p;
    EXPECT_EQ(b->QueryInterface(IQVComparable::iid, &p), static_cast<qv::Result>(0x80004002u));
    EXPECT_EQ(p, nullptr);
    ASSERT_EQ(b->QueryInterface(IQVUnknown::iid, &p), 0);
    EXPECT_EQ(p, static_cast<IQVUnknown*>(b.get()));
    static_cast<IQVUnknown*>(p)->Release();
    EXPECT_EQ(b->SetOuterUnknown(nullptr), static_cast<qv::Result>(0x80040110u));
}

TEST(ComObject, ModuleIsCountedOnFirstReferenceAndLastRelease)
{
    qv::qvcom::Module module;
    {
        Widget unreferenced;
        unreferenced.SetComModule(&module);
    }
    EXPECT_EQ(module.GetLockCount(), 0);

    Widget* w = new Widget;
    w->SetComModule(&module);
    w->AddRef();
    EXPECT_EQ(module.GetLockCount(), 1);
    w->AddRef();
    EXPECT_EQ(module.GetLockCount(), 1);
    EXPECT_EQ(module.CanUnloadNow(), 1);
    EXPECT_EQ(w->Release(), 1u);
    EXPECT_EQ(module.GetLockCount(), 1);
    EXPECT_EQ(w->Release(), 0u);
    EXPECT_EQ(module.GetLockCount(), 0);
    EXPECT_EQ(module.CanUnloadNow(), 0);
}

TEST(ComObject, CopyTakesTheSourcesCount)
{
    qv::qvcom::Module module;
    Widget a;
    a.SetComModule(&module);
    a.AddRef();
    a.AddRef();
    Widget b(a);
    EXPECT_EQ(b.GetRefCount(), 2);
    EXPECT_EQ(b.GetComModule(), &module);
    Widget c;
    c = a;
    EXPECT_EQ(c.GetRefCount(), 2);
    c = c;
    EXPECT_EQ(c.GetRefCount(), 2);
    // Stack objects are never released to zero; bring the module back.
    module.Unlock();
}

TEST(ComObject, ConcurrentAddRefReleaseKeepsTheCount)
{
    qv::Reference<Widget> w(new Widget);
    auto hammer = [&] {
        for (int i = 0; i < 1000000; ++i) {
            w->AddRef();
            w->Release();
        }
    };
    std::thread a(hammer), b(hammer);
    a.join();
    b.join();
    EXPECT_EQ(w->GetRefCount(), 1);
}

TEST(Reference, OwnershipOperations)
{
    Widget* raw = new Widget;
    qv::Reference<Widget> a(raw);
    EXPECT_EQ(raw->GetRefCount(), 1);
    {
        qv::Reference<Widget> b(a);
        qv::Reference<qv::Object> up(b);
        EXPECT_EQ(raw->GetRefCount(), 3);
        EXPECT_TRUE(up == b);
        qv::Reference<Widget> down = up.cast<Widget>();
        EXPECT_EQ(down.get(), raw);
        qv::Reference<IFirst> first = up.query<IFirst>();
        ASSERT_TRUE(first);
        EXPECT_EQ(first->first(), 1);
    }
    EXPECT_EQ(raw->GetRefCount(), 1);

    qv::Reference<Widget> moved(std::move(a));
    EXPECT_FALSE(a);
    EXPECT_EQ(raw->GetRefCount(), 1);
    moved = moved;
    EXPECT_EQ(raw->GetRefCount(), 1);
    moved.reset(raw);
    EXPECT_EQ(raw->GetRefCount(), 1);

    Widget* detached = moved.detach();
    EXPECT_FALSE(moved);
    EXPECT_EQ(detached->GetRefCount(), 1);
    qv::Reference<Widget> adopted;
    adopted.attach(detached);
    EXPECT_EQ(detached->GetRefCount(), 1);
    // A reference goes wherever its pointer, or a base's, is taken, and
    // lends it without a count of its own.
    auto countThrough = [](qv::ComObject* object) { return object->GetRefCount(); };
    EXPECT_EQ(countThrough(adopted), 1);
    IFirst* first = adopted;
    EXPECT_EQ(first->first(), 1);
    EXPECT_EQ(static_cast<Widget*>(qv::Reference<Widget>()), nullptr);
    qv::Reference<qv::Object> base;
    base = adopted;
    EXPECT_EQ(detached->GetRefCount(), 2);
    base = std::move(adopted);
    EXPECT_FALSE(adopted);
    EXPECT_EQ(detached->GetRefCount(), 1);

    qv::Reference<qv::Object> notWidget(new qv::Object);
    EXPECT_FALSE(notWidget.cast<Widget>());
    EXPECT_FALSE(notWidget.query<IFirst>());
}
