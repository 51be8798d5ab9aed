// A module that supplies string bundles, as a third party would write one:
// it knows only the IStringBundle interface and fills the caller's buffer
// through its write lock.
//   "Velmara.StringBundle.greetings.de"  German texts for two keys;
//                                         "broken" answers 0x8007000D
//   "Velmara.StringBundle.broken"         an object without IStringBundle

#include <qv/core/ClassFactory.h>
#include <qv/core/ComObject.h>
#include <qv/core/DllModule.h>
#include <qv/i18n/IStringBundle.h>

#include <cstring>
#include <string>

namespace {

class GermanGreetings : public qv::ComObject, public qv::i18n::IStringBundle {
public:
    // {C6E92D4E-E794-47B6-88AB-15063D785866}
    static constexpr GUID clsid = {0xC6E92D4E, 0xE794, 0x47B6, {0x88, 0xAB, 0x15, 0x06, 0x3D, 0x78, 0x58, 0x66}};

    static const char16_t* GetComProgID() noexcept { return u"Velmara.StringBundle.greetings.de.1"; }
    static const char16_t* GetComVersionIndependentProgID() noexcept { return u"Velmara.StringBundle.greetings.de"; }
    static const char16_t* GetComDescription() noexcept { return u"German greetings (test bundle)"; }
    static const char16_t* GetComObjectVersion() noexcept { return u"1.0"; }

    QV_DECLARE_INTERFACE_MAP()

    qv::Result GetString(const char16_t* key, qv::util::ICharBuffer* out) const override
    {
        if (key == nullptr || out == nullptr)
            return qv::results::POINTER;
        const std::u16string wanted(key);
        if (wanted == u"broken")
            return qv::results::INVALID_DATA;
        if (wanted == u"greeting")
            return write(u"Hallo, {0}!", out);
        if (wanted == u"farewell")
            return write(u"Tsch\u00FCss", out);
        return MISSING_KEY;
    }

    qv::Result GetBundleName(qv::util::ICharBuffer* out) const override
    {
        return out == nullptr ? qv::results::POINTER : write(u"greetings_de", out);
    }

    using qv::i18n::IStringBundle::GetString;

private:
    static qv::Result write(const std::u16string& text, qv::util::ICharBuffer* out)
    {
        const int32_t length = static_cast<int32_t>(text.size());
        char16_t* data = nullptr;
        const qv::Result locked = out->GetWriteLock(length, &data);
        if (locked < 0)
            return locked;
        std::memcpy(data, text.data(), text.size() * sizeof(char16_t));
        return out->ReleaseWriteLock(length);
    }
};

class NotABundle : public qv::ComObject {
public:
    // {EBBCFB96-4ED3-4387-B4EF-FB6A1EFFE4CC}
    static constexpr GUID clsid = {0xEBBCFB96, 0x4ED3, 0x4387, {0xB4, 0xEF, 0xFB, 0x6A, 0x1E, 0xFF, 0xE4, 0xCC}};

    static const char16_t* GetComProgID() noexcept { return u"Velmara.StringBundle.broken.1"; }
    static const char16_t* GetComVersionIndependentProgID() noexcept { return u"Velmara.StringBundle.broken"; }
    static const char16_t* GetComDescription() noexcept { return u"Registered as a bundle, is none (test)"; }
};

} // namespace

QV_BEGIN_INTERFACE_MAP(GermanGreetings)
QV_INTERFACE_ENTRY(GermanGreetings, qv::i18n::IStringBundle)
QV_INTERFACE_CHAIN(qv::ComObject)
QV_END_INTERFACE_MAP()

namespace {

// The bundle last: GetClassObject goes on past a row that fails and returns
// the last row's code, so a failure of an earlier row would be reported as
// "class not available" rather than as itself.
qv::qvcom::ClassData g_classes[] = {
    QV_CLASS_DATA_ENTRY(NotABundle, NotABundle::clsid),
    QV_CLASS_DATA_ENTRY(GermanGreetings, GermanGreetings::clsid),
    QV_CLASS_DATA_END,
};

qv::qvcom::DllModule g_module(g_classes);

} // namespace

QV_DLL_MODULE_EXPORTS(g_module)
