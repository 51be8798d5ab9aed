#ifndef QV_I18N_ILOCALE_H
#define QV_I18N_ILOCALE_H

#include <qv/core/IQVUnknown.h>
#include <qv/util/ICharBuffer.h>

namespace qv {
namespace i18n {

// A locale's component face: each text query fills the caller's ICharBuffer
// with what the Locale method of the same name returns (GetName: toString).
// 0 on success, 0x80004003 for a null buffer, the buffer's own code when it
// refuses the text, 0x8007000E when memory runs out.
class ILocale : public IQVUnknown {
public:
    static constexpr GUID iid = {0x77936ED2, 0x9051, 0x4039, {0x92, 0x42, 0xCB, 0x63, 0xE6, 0x64, 0x6D, 0xBB}};

    virtual Result GetLanguage(util::ICharBuffer* out) const = 0;
    virtual Result GetCountry(util::ICharBuffer* out) const = 0;
    virtual Result GetVariant(util::ICharBuffer* out) const = 0;
    virtual Result GetName(util::ICharBuffer* out) const = 0;
    virtual Result GetDisplayLanguage(util::ICharBuffer* out) const = 0;
    virtual Result GetDisplayCountry(util::ICharBuffer* out) const = 0;
    virtual Result GetDisplayName(util::ICharBuffer* out) const = 0;

protected:
    ~ILocale() = default;
};

} // namespace i18n
} // namespace qv

#endif
