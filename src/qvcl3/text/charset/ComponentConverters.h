#ifndef QVCL3_TEXT_CHARSET_COMPONENTCONVERTERS_H
#define QVCL3_TEXT_CHARSET_COMPONENTCONVERTERS_H

#include <qv/core/Exception.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>

namespace qv {
namespace text {
namespace charset {
namespace detail {

// The last resort of the converter lookup: a component registered as
// "Velmara.CharCodec." + name, wrapped in CTBCom (encoder) or BTCCom. Null
// when no component answers; failures of the component route are not errors
// of the lookup.
Object* createComponentConverter(const char16_t* name, int32_t length, bool encoder);

// Throws the converters' exception for a failing component code.
void checkComponentResult(Result result);

// What an adapter asks its component once: name and element ratios. A null
// component is an argument fault.
template <class Component>
void describeComponent(Component* component, const char16_t*& name, int32_t& maxBytesPerChar, int32_t& maxCharsPerByte)
{
    if (!component)
        throw ResultException(results::INVALIDARG);
    checkComponentResult(component->GetEncodingName(&name));
    checkComponentResult(component->GetMaxBytesPerChar(&maxBytesPerChar));
    checkComponentResult(component->GetMaxCharsPerByte(&maxCharsPerByte));
}

// convert() and flush() of both adapters: the count written is how far the
// component moved the output position.
template <class Component, class In, class Out>
int32_t convertThrough(Component* component, In* in, int32_t* inPos, int32_t inEnd, Out* out, int32_t* outPos,
                       int32_t outEnd)
{
    if (!inPos || !outPos)
        throw ResultException(results::POINTER);
    const int32_t start = *outPos;
    checkComponentResult(component->Convert(in, inPos, inEnd, out, outPos, outEnd));
    return *outPos - start;
}

template <class Component, class Out>
int32_t flushThrough(Component* component, Out* out, int32_t* outPos, int32_t outEnd)
{
    if (!outPos)
        throw ResultException(results::POINTER);
    const int32_t start = *outPos;
    checkComponentResult(component->Flush(out, outPos, outEnd));
    return *outPos - start;
}

} // namespace detail
} // namespace charset
} // namespace text
} // namespace qv

#endif
