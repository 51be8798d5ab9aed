#include <qv/core/Boundary.h>
#include <qv/text/charset/CTBCom.h>

#include "ComponentConverters.h"

namespace qv {
namespace text {
namespace charset {

CTBCom::CTBCom(qvcom::IQVCharToByteConverter* component) : m_component(component)
{
    detail::describeComponent(component, m_name, m_maxBytesPerChar, m_maxCharsPerByte);
    passSubstitution();
}

CTBCom::~CTBCom() = default;

int32_t CTBCom::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                        int32_t outEnd)
{
    return detail::convertThrough(m_component.get(), in, inPos, inEnd, out, outPos, outEnd);
}

int32_t CTBCom::flush(signed char* out, int32_t* outPos, int32_t outEnd)
{
    return detail::flushThrough(m_component.get(), out, outPos, outEnd);
}

void CTBCom::reset()
{
    detail::checkComponentResult(m_component->Reset());
}

const char16_t* CTBCom::getEncodingName()
{
    return m_name ? m_name : u"";
}

int CTBCom::getMaxBytesPerChar()
{
    return m_maxBytesPerChar;
}

int CTBCom::getMaxCharsPerByte()
{
    return m_maxCharsPerByte;
}

void CTBCom::setSubstitutionMode(bool on)
{
    CharToByteConverter::setSubstitutionMode(on);
    passSubstitution();
}

void CTBCom::setSubstitutionBytes(const signed char* values, int count)
{
    CharToByteConverter::setSubstitutionBytes(values, count);
    passSubstitution();
}

void CTBCom::passSubstitution()
{
    signed char values[MAX_SUBSTITUTION_BYTES];
    const int count = getSubstitutionBytes(values, MAX_SUBSTITUTION_BYTES);
    detail::checkComponentResult(m_component->SetSubstitution(getSubstitutionMode() ? 1 : 0, values, count));
}

} // namespace charset
} // namespace text
} // namespace qv
