#include <qv/text/charset/CTBUTF32.h>
#include <qv/text/charset/CTBUTF32BE.h>
#include <qv/text/charset/CTBUTF32LE.h>

namespace qv::text::charset {

CTBUTF32Base::CTBUTF32Base(bool bigEndian, bool byteOrderMark) : CTBWideBase<4>(bigEndian, byteOrderMark) {}

CTBUTF32LE::CTBUTF32LE() : CTBUTF32Base(false, false) {}

const char16_t* CTBUTF32LE::getEncodingName()
{
    return u"UTF-32LE";
}

CTBUTF32BE::CTBUTF32BE() : CTBUTF32Base(true, false) {}

const char16_t* CTBUTF32BE::getEncodingName()
{
    return u"UTF-32BE";
}

CTBUTF32::CTBUTF32() : CTBUTF32Base(true, true) {}

const char16_t* CTBUTF32::getEncodingName()
{
    return u"UTF-32";
}

} // namespace qv::text::charset
