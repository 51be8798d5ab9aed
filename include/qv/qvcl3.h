#ifndef QV_QVCL3_H
#define QV_QVCL3_H

// Every public header of the class library.
#include <qvcore3/qvcore3.h>
#include <qv/core/Export.h>
#include <qv/core/Version.h>
#include <qv/text/charset/BTCAMP7.h>
#include <qv/text/charset/BTCASCII.h>
#include <qv/text/charset/BTCCP1252.h>
#include <qv/text/charset/BTCCP437.h>
#include <qv/text/charset/BTCCodePage.h>
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

#endif
