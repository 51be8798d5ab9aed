#include <qv/text/charset/CTBUTF16.h>
#include <qv/text/charset/CTBUTF16BE.h>
#include <qv/text/charset/CTBUTF16LE.h>

namespace qv::text::charset {

CTBUTF16Base::CTBUTF16Base(bool bigEndian, bool byteOrderMark) : CTBWideBase<2>(bigEndian, byteOrderMark) {}

CTBUTF16LE::CTBUTF16LE() : CTBUTF16Base(false, false) {}

const char16_t* CTBUTF16LE::getEncodingName()
{
    return u"UTF-16LE";
}

CTBUTF16BE::CTBUTF16BE() : CTBUTF16Base(true, false) {}

const char16_t* CTBUTF16BE::getEncodingName()
{
    return u"UTF-16BE";
}

CTBUTF16::CTBUTF16() : CTBUTF16Base(true, true) {}

const char16_t* CTBUTF16::getEncodingName()
{
    return u"UTF-16";
}

} // namespace qv::text::charset
