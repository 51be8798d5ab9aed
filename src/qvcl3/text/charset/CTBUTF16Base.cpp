#include <qv/text/charset/CTBUTF16.h>
#include <qv/text/charset/CTBUTF16BE.h>
#include <qv/text/charset/CTBUTF16LE.h>

#include "WideEncoder.h"

namespace qv::text::charset {

CTBUTF16Base::CTBUTF16Base(bool bigEndian, bool byteOrderMark)
    : m_bigEndian(bigEndian), m_byteOrderMark(byteOrderMark), m_state{byteOrderMark, 0}
{}

int32_t CTBUTF16Base::convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                              int32_t outEnd)
{
    return detail::encodeWide<2>(m_state, m_bigEndian, in, inPos, inEnd, out, outPos, outEnd);
}

int32_t CTBUTF16Base::flush(signed char* out, int32_t* outPos, int32_t outEnd)
{
    return detail::flushWide(m_state, out, outPos, outEnd);
}

void CTBUTF16Base::reset()
{
    m_state = State{m_byteOrderMark, 0};
}

int CTBUTF16Base::getMaxBytesPerChar() const
{
    return 2;
}

int CTBUTF16Base::getMaxCharsPerByte() const
{
    return 1;
}

CTBUTF16LE::CTBUTF16LE() : CTBUTF16Base(false, false) {}

const char16_t* CTBUTF16LE::getEncodingName() const
{
    return u"UTF-16LE";
}

CTBUTF16BE::CTBUTF16BE() : CTBUTF16Base(true, false) {}

const char16_t* CTBUTF16BE::getEncodingName() const
{
    return u"UTF-16BE";
}

CTBUTF16::CTBUTF16() : CTBUTF16Base(true, true) {}

const char16_t* CTBUTF16::getEncodingName() const
{
    return u"UTF-16";
}

} // namespace qv::text::charset
