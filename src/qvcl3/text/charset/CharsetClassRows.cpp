#include "core/ClassTable.h"

#include <qv/text/charset/BTCAMP7.h>
#include <qv/text/charset/BTCASCII.h>
#include <qv/text/charset/BTCCP1252.h>
#include <qv/text/charset/BTCCP437.h>
#include <qv/text/charset/BTCCodePage.h>
#include <qv/text/charset/BTCCom.h>
#include <qv/text/charset/BTCISO8859_1.h>
#include <qv/text/charset/BTCSingleByte.h>
#include <qv/text/charset/BTCUTF16.h>
#include <qv/text/charset/BTCUTF16BE.h>
#include <qv/text/charset/BTCUTF16Base.h>
#include <qv/text/charset/BTCUTF16LE.h>
#include <qv/text/charset/BTCUTF32.h>
#include <qv/text/charset/BTCUTF32BE.h>
#include <qv/text/charset/BTCUTF32Base.h>
#include <qv/text/charset/BTCUTF32LE.h>
#include <qv/text/charset/BTCUTF8.h>
#include <qv/text/charset/ByteToCharConverter.h>
#include <qv/text/charset/CTBAMP7.h>
#include <qv/text/charset/CTBASCII.h>
#include <qv/text/charset/CTBCP1252.h>
#include <qv/text/charset/CTBCP437.h>
#include <qv/text/charset/CTBCodePage.h>
#include <qv/text/charset/CTBCom.h>
#include <qv/text/charset/CTBISO8859_1.h>
#include <qv/text/charset/CTBSingleByte.h>
#include <qv/text/charset/CTBUTF16.h>
#include <qv/text/charset/CTBUTF16BE.h>
#include <qv/text/charset/CTBUTF16Base.h>
#include <qv/text/charset/CTBUTF16LE.h>
#include <qv/text/charset/CTBUTF32.h>
#include <qv/text/charset/CTBUTF32BE.h>
#include <qv/text/charset/CTBUTF32Base.h>
#include <qv/text/charset/CTBUTF32LE.h>
#include <qv/text/charset/CTBUTF8.h>
#include <qv/text/charset/CharToByteConverter.h>
#include <qv/text/charset/CharsetExceptions.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_charsetClassRows[] = {
    QV_CLASS_ROW(text::charset::BTCAMP7),
    QV_CLASS_ROW(text::charset::BTCASCII),
    QV_CLASS_ROW(text::charset::BTCCP1252),
    QV_CLASS_ROW(text::charset::BTCCP437),
    QV_CLASS_ROW_NO_CREATOR(text::charset::BTCCodePage),
    QV_CLASS_ROW_NO_CREATOR(text::charset::BTCCom),
    QV_CLASS_ROW(text::charset::BTCISO8859_1),
    QV_CLASS_ROW_NO_CREATOR(text::charset::BTCSingleByte),
    QV_CLASS_ROW(text::charset::BTCUTF16),
    QV_CLASS_ROW(text::charset::BTCUTF16BE),
    QV_CLASS_ROW_NO_CREATOR(text::charset::BTCUTF16Base),
    QV_CLASS_ROW(text::charset::BTCUTF16LE),
    QV_CLASS_ROW(text::charset::BTCUTF32),
    QV_CLASS_ROW(text::charset::BTCUTF32BE),
    QV_CLASS_ROW_NO_CREATOR(text::charset::BTCUTF32Base),
    QV_CLASS_ROW(text::charset::BTCUTF32LE),
    QV_CLASS_ROW(text::charset::BTCUTF8),
    QV_CLASS_ROW_NO_CREATOR(text::charset::ByteToCharConverter),
    QV_CLASS_ROW(text::charset::CTBAMP7),
    QV_CLASS_ROW(text::charset::CTBASCII),
    QV_CLASS_ROW(text::charset::CTBCP1252),
    QV_CLASS_ROW(text::charset::CTBCP437),
    QV_CLASS_ROW_NO_CREATOR(text::charset::CTBCodePage),
    QV_CLASS_ROW_NO_CREATOR(text::charset::CTBCom),
    QV_CLASS_ROW(text::charset::CTBISO8859_1),
    QV_CLASS_ROW_NO_CREATOR(text::charset::CTBSingleByte),
    QV_CLASS_ROW(text::charset::CTBUTF16),
    QV_CLASS_ROW(text::charset::CTBUTF16BE),
    QV_CLASS_ROW_NO_CREATOR(text::charset::CTBUTF16Base),
    QV_CLASS_ROW(text::charset::CTBUTF16LE),
    QV_CLASS_ROW(text::charset::CTBUTF32),
    QV_CLASS_ROW(text::charset::CTBUTF32BE),
    QV_CLASS_ROW_NO_CREATOR(text::charset::CTBUTF32Base),
    QV_CLASS_ROW(text::charset::CTBUTF32LE),
    QV_CLASS_ROW(text::charset::CTBUTF8),
    QV_CLASS_ROW_NO_CREATOR(text::charset::CharToByteConverter),
    QV_CLASS_ROW(text::charset::InvalidCharacterException),
    QV_CLASS_ROW(text::charset::UnknownEncodingException),
    QV_CLASS_ROW(text::charset::UnmappableCharacterException),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
