#include <qv/text/charset/CTBUTF32.h>
#include <qv/text/charset/CTBUTF32BE.h>
#include <qv/text/charset/CTBUTF32LE.h>

#include "WideEncoder.h"

namespace qv::text::charset {

CTBUTF32Base::CTBUTF32Base(bool bigEndian, bool byteOrderMark)
    : m_bigEndian(bigEndian), m_byteOrderMark(byteOrderMark), m_state{byteOrderMark, 0}
{}

int32_t CTBUTF32Base::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                              int32_t outEnd)
{
    return detail::encodeWide<4>(m_state, m_bigEndian, in, inPos, inEnd, out, outPos, outEnd);
}

int32_t CTBUTF32Base::flush(signed char* out, int32_t* outPos, int32_t outEnd)
{
    return detail::flushWide(m_state, out, outPos, outEnd);
}

void CTBUTF32Base::reset()
{
    m_state = State{m_byteOrderMark, 0};
}

int CTBUTF32Base::getMaxBytesPerChar() const
{
    return 4;
}

int CTBUTF32Base::getMaxCharsPerByte() const
{
    return 1;
}

CTBUTF32LE::CTBUTF32LE() : CTBUTF32Base(false, false) {}

const char16_t* CTBUTF32LE::getEncodingName() const
{
    return u"UTF-32LE";
}

CTBUTF32BE::CTBUTF32BE() : CTBUTF32Base(true, false) {}

const char16_t* CTBUTF32BE::getEncodingName() const
{
    return u"UTF-32BE";
}

CTBUTF32::CTBUTF32() : CTBUTF32Base(true, true) {}

const char16_t* CTBUTF32::getEncodingName() const
{
    return u"UTF-32";
}

} // namespace qv::text::charset
