#ifndef QV_I18N_ISTRINGBUNDLE_H
#define QV_I18N_ISTRINGBUNDLE_H

#include <qv/core/IQVUnknown.h>
#include <qv/core/TextSpelling.h>
#include <qv/util/ICharBuffer.h>

namespace qv {
namespace i18n {

// A string bundle's component face: what a module implements to supply a
// bundle (registered under "Velmara.StringBundle." + base name, + "." +
// locale for a level below the root), and what every native StringBundle
// answers, so that a bundle can be handed across a component boundary.
// Keys are NUL-terminated UTF-16; texts are written into the caller's
// ICharBuffer (a qv::String is one). Result codes, never exceptions:
//   0           the text is in out;
//   MISSING_KEY (0x80070002) the bundle has no text for key; out untouched.
//               A supplied bundle answers only for its own level: getBundle
//               asks the less specific levels itself;
//   0x80004003  key or out is null;
//   other       any failure; StringBundle::getString throws it as
//               ResultException (OutOfMemoryException for 0x8007000E).
// A supplied bundle is cached and shared, so it must answer from any thread.
class IStringBundle : public IQVUnknown {
public:
    static constexpr GUID iid = {0x1955A86B, 0xBC24, 0x4E32, {0xAC, 0x21, 0x1C, 0xCD, 0xAA, 0xDB, 0xBC, 0xA4}};
    // The code MissingResourceException carries, so that a native bundle's
    // missing key crosses the boundary as this code and comes back as that
    // exception.
    static constexpr Result MISSING_KEY = results::FILE_NOT_FOUND;

    virtual Result GetString(const char16_t* key, util::ICharBuffer* out) const = 0;
    // The name messages give the bundle ("msg_de_AT").
    virtual Result GetBundleName(util::ICharBuffer* out) const = 0;

    template <class T, IfUShortText<T> = 0>
    Result GetString(const T* key, util::ICharBuffer* out) const
    {
        return GetString(reinterpret_cast<const char16_t*>(key), out);
    }

protected:
    ~IStringBundle() = default;
};

} // namespace i18n
} // namespace qv

#endif
