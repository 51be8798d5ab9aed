#include <qv/core/Boundary.h>
#include <qv/text/charset/BTCCom.h>

#include "ComponentConverters.h"

namespace qv {
namespace text {
namespace charset {

BTCCom::BTCCom(qvcom::IQVByteToCharConverter* component) : m_component(component)
{
    detail::describeComponent(component, m_name, m_maxBytesPerChar, m_maxCharsPerByte);
    passSubstitution();
}

BTCCom::~BTCCom() = default;

int32_t BTCCom::convert(const signed char* in, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                        int32_t outEnd)
{
    return detail::convertThrough(m_component.get(), in, inPos, inEnd, out, outPos, outEnd);
}

int32_t BTCCom::flush(char16_t* out, int32_t* outPos, int32_t outEnd)
{
    return detail::flushThrough(m_component.get(), out, outPos, outEnd);
}

void BTCCom::reset()
{
    detail::checkComponentResult(m_component->Reset());
}

const char16_t* BTCCom::getEncodingName()
{
    return m_name ? m_name : u"";
}

int BTCCom::getMaxBytesPerChar()
{
    return m_maxBytesPerChar;
}

int BTCCom::getMaxCharsPerByte()
{
    return m_maxCharsPerByte;
}

void BTCCom::setSubstitutionMode(bool on)
{
    ByteToCharConverter::setSubstitutionMode(on);
    passSubstitution();
}

void BTCCom::setSubstitutionChars(const char16_t* values, int count)
{
    ByteToCharConverter::setSubstitutionChars(values, count);
    passSubstitution();
}

void BTCCom::passSubstitution()
{
    char16_t values[MAX_SUBSTITUTION_CHARS];
    const int count = getSubstitutionChars(values, MAX_SUBSTITUTION_CHARS);
    detail::checkComponentResult(m_component->SetSubstitution(getSubstitutionMode() ? 1 : 0, values, count));
}

} // namespace charset
} // namespace text
} // namespace qv
