#include <qv/core/Boundary.h>
#include <qv/text/charset/BTCCom.h>
#include <qv/text/charset/CTBCom.h>
#include <qv/text/charset/CharsetExceptions.h>

#include "ComponentConverters.h"

#include <string>

namespace qv {
namespace text {
namespace charset {
namespace detail {

namespace {

template <class Interface>
Reference<Interface> createComponent(const GUID& clsid)
{
    void* object = nullptr;
    if (QVModuleComCreateObject(QV_INVALID_HANDLE, &clsid, nullptr, &Interface::iid, &object) < 0 || !object)
        return nullptr;
    Reference<Interface> component;
    component.attach(static_cast<Interface*>(object));
    return component;
}

} // namespace

Object* createComponentConverter(const char16_t* name, int32_t length, bool encoder)
{
    const std::u16string progId = u"Velmara.CharCodec." + std::u16string(name, static_cast<size_t>(length));
    GUID clsid;
    if (QVComClassIDFromProgID(progId.c_str(), &clsid) < 0)
        return nullptr;
    if (encoder) {
        if (Reference<qvcom::IQVCharToByteConverter> component = createComponent<qvcom::IQVCharToByteConverter>(clsid))
            return new CTBCom(component.get());
    } else if (Reference<qvcom::IQVByteToCharConverter> component =
                   createComponent<qvcom::IQVByteToCharConverter>(clsid)) {
        return new BTCCom(component.get());
    }
    return nullptr;
}

void checkComponentResult(Result result)
{
    if (result >= 0)
        return;
    if (result == results::INVALID_CHARACTER)
        throw InvalidCharacterException(String(u"Converter component found malformed input"));
    if (result == results::UNMAPPABLE_CHARACTER)
        throw UnmappableCharacterException(String(u"Converter component found an unmappable character"));
    throw ResultException(result);
}

} // namespace detail
} // namespace charset
} // namespace text
} // namespace qv
