#include "core/ClassTable.h"

#include <qv/core/Exception.h>
#include <qv/core/ExternalException.h>
#include <qv/io/IoException.h>
#include <qv/lang/String.h>
#include <qv/sync/Condition.h>
#include <qv/sync/Event.h>
#include <qv/sync/FakeMutex.h>
#include <qv/sync/Gate.h>
#include <qv/sync/Mutex.h>
#include <qv/sync/ReaderWriterLock.h>
#include <qv/sync/Semaphore.h>
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
#include <qv/util/BasicBuffer.h>

namespace qv {
namespace detail {

// In the order of the class names. Every class of the library stands here;
// each area adds its rows when it adds classes. The three Int...Exception
// classes are listed twice on purpose: the later rows, without a creating
// function, lose to the first registration.
const ClassTableRow g_classTable[] = {
    QV_CLASS_ROW_NO_CREATOR(u"qv::AccessViolationException", AccessViolationException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::ArrayBoundsException", ArrayBoundsException),
    QV_CLASS_ROW(u"qv::CastFailedException", CastFailedException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::Class", Class),
    QV_CLASS_ROW(u"qv::ClassNotFoundException", ClassNotFoundException),
    QV_CLASS_ROW(u"qv::CloneNotSupportedException", CloneNotSupportedException),
    QV_CLASS_ROW(u"qv::Exception", Exception),
    QV_CLASS_ROW_NO_CREATOR(u"qv::ExternalException", ExternalException),
    QV_CLASS_ROW(u"qv::IllegalAccessException", IllegalAccessException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::IllegalInstructionException", IllegalInstructionException),
    QV_CLASS_ROW(u"qv::IllegalStateException", IllegalStateException),
    QV_CLASS_ROW(u"qv::IntDivByZeroException", IntDivByZeroException),
    QV_CLASS_ROW(u"qv::IntErrorException", IntErrorException),
    QV_CLASS_ROW(u"qv::IntOverflowException", IntOverflowException),
    QV_CLASS_ROW(u"qv::InvalidPathException", InvalidPathException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::MathDivByZeroException", MathDivByZeroException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::MathErrorException", MathErrorException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::MathInvalidOpException", MathInvalidOpException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::MathOverflowException", MathOverflowException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::MathUnderflowException", MathUnderflowException),
    QV_CLASS_ROW(u"qv::Object", Object),
    QV_CLASS_ROW(u"qv::OutOfMemoryException", OutOfMemoryException),
    QV_CLASS_ROW(u"qv::RangeErrorException", RangeErrorException),
    QV_CLASS_ROW(u"qv::ReadOnlyException", ReadOnlyException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::StackOverflowException", StackOverflowException),
    QV_CLASS_ROW(u"qv::String", String),
    QV_CLASS_ROW(u"qv::UnsupportedOperationException", UnsupportedOperationException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::UserAbortException", UserAbortException),
    QV_CLASS_ROW(u"qv::io::IoException", io::IoException),
    QV_CLASS_ROW(u"qv::io::TimeoutException", io::TimeoutException),
    QV_CLASS_ROW(u"qv::io::UnexpectedEOFException", io::UnexpectedEOFException),
    QV_CLASS_ROW(u"qv::sync::Condition", sync::Condition),
    QV_CLASS_ROW(u"qv::sync::Event", sync::Event),
    QV_CLASS_ROW(u"qv::sync::FakeMutex", sync::FakeMutex),
    QV_CLASS_ROW(u"qv::sync::Gate", sync::Gate),
    QV_CLASS_ROW_NO_CREATOR(u"qv::sync::LockObject", sync::LockObject),
    QV_CLASS_ROW(u"qv::sync::Mutex", sync::Mutex),
    QV_CLASS_ROW_NO_CREATOR(u"qv::sync::Object", sync::Object),
    QV_CLASS_ROW(u"qv::sync::ReaderWriterLock", sync::ReaderWriterLock),
    QV_CLASS_ROW(u"qv::sync::Semaphore", sync::Semaphore),
    QV_CLASS_ROW(u"qv::text::charset::BTCAMP7", text::charset::BTCAMP7),
    QV_CLASS_ROW(u"qv::text::charset::BTCASCII", text::charset::BTCASCII),
    QV_CLASS_ROW(u"qv::text::charset::BTCCP1252", text::charset::BTCCP1252),
    QV_CLASS_ROW(u"qv::text::charset::BTCCP437", text::charset::BTCCP437),
    QV_CLASS_ROW_NO_CREATOR(u"qv::text::charset::BTCCodePage", text::charset::BTCCodePage),
    QV_CLASS_ROW(u"qv::text::charset::BTCISO8859_1", text::charset::BTCISO8859_1),
    QV_CLASS_ROW_NO_CREATOR(u"qv::text::charset::BTCSingleByte", text::charset::BTCSingleByte),
    QV_CLASS_ROW(u"qv::text::charset::BTCUTF16", text::charset::BTCUTF16),
    QV_CLASS_ROW(u"qv::text::charset::BTCUTF16BE", text::charset::BTCUTF16BE),
    QV_CLASS_ROW_NO_CREATOR(u"qv::text::charset::BTCUTF16Base", text::charset::BTCUTF16Base),
    QV_CLASS_ROW(u"qv::text::charset::BTCUTF16LE", text::charset::BTCUTF16LE),
    QV_CLASS_ROW(u"qv::text::charset::BTCUTF32", text::charset::BTCUTF32),
    QV_CLASS_ROW(u"qv::text::charset::BTCUTF32BE", text::charset::BTCUTF32BE),
    QV_CLASS_ROW_NO_CREATOR(u"qv::text::charset::BTCUTF32Base", text::charset::BTCUTF32Base),
    QV_CLASS_ROW(u"qv::text::charset::BTCUTF32LE", text::charset::BTCUTF32LE),
    QV_CLASS_ROW(u"qv::text::charset::BTCUTF8", text::charset::BTCUTF8),
    QV_CLASS_ROW_NO_CREATOR(u"qv::text::charset::ByteToCharConverter", text::charset::ByteToCharConverter),
    QV_CLASS_ROW(u"qv::text::charset::CTBAMP7", text::charset::CTBAMP7),
    QV_CLASS_ROW(u"qv::text::charset::CTBASCII", text::charset::CTBASCII),
    QV_CLASS_ROW(u"qv::text::charset::CTBCP1252", text::charset::CTBCP1252),
    QV_CLASS_ROW(u"qv::text::charset::CTBCP437", text::charset::CTBCP437),
    QV_CLASS_ROW_NO_CREATOR(u"qv::text::charset::CTBCodePage", text::charset::CTBCodePage),
    QV_CLASS_ROW(u"qv::text::charset::CTBISO8859_1", text::charset::CTBISO8859_1),
    QV_CLASS_ROW_NO_CREATOR(u"qv::text::charset::CTBSingleByte", text::charset::CTBSingleByte),
    QV_CLASS_ROW(u"qv::text::charset::CTBUTF16", text::charset::CTBUTF16),
    QV_CLASS_ROW(u"qv::text::charset::CTBUTF16BE", text::charset::CTBUTF16BE),
    QV_CLASS_ROW_NO_CREATOR(u"qv::text::charset::CTBUTF16Base", text::charset::CTBUTF16Base),
    QV_CLASS_ROW(u"qv::text::charset::CTBUTF16LE", text::charset::CTBUTF16LE),
    QV_CLASS_ROW(u"qv::text::charset::CTBUTF32", text::charset::CTBUTF32),
    QV_CLASS_ROW(u"qv::text::charset::CTBUTF32BE", text::charset::CTBUTF32BE),
    QV_CLASS_ROW_NO_CREATOR(u"qv::text::charset::CTBUTF32Base", text::charset::CTBUTF32Base),
    QV_CLASS_ROW(u"qv::text::charset::CTBUTF32LE", text::charset::CTBUTF32LE),
    QV_CLASS_ROW(u"qv::text::charset::CTBUTF8", text::charset::CTBUTF8),
    QV_CLASS_ROW_NO_CREATOR(u"qv::text::charset::CharToByteConverter", text::charset::CharToByteConverter),
    QV_CLASS_ROW(u"qv::text::charset::InvalidCharacterException", text::charset::InvalidCharacterException),
    QV_CLASS_ROW(u"qv::text::charset::UnknownEncodingException", text::charset::UnknownEncodingException),
    QV_CLASS_ROW(u"qv::text::charset::UnmappableCharacterException", text::charset::UnmappableCharacterException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::util::AbstractByteBuffer", util::AbstractByteBuffer),
    QV_CLASS_ROW_NO_CREATOR(u"qv::util::AbstractCharBuffer", util::AbstractCharBuffer),
    QV_CLASS_ROW(u"qv::util::MTByteBuffer", util::MTByteBuffer),
    QV_CLASS_ROW(u"qv::util::MTCharBuffer", util::MTCharBuffer),
    QV_CLASS_ROW(u"qv::util::ROByteBuffer", util::ROByteBuffer),
    QV_CLASS_ROW(u"qv::util::ROCharBuffer", util::ROCharBuffer),
    QV_CLASS_ROW(u"qv::util::RWByteBuffer", util::RWByteBuffer),
    QV_CLASS_ROW(u"qv::util::RWCharBuffer", util::RWCharBuffer),
    QV_CLASS_ROW_NO_CREATOR(u"qv::IntDivByZeroException", IntDivByZeroException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::IntErrorException", IntErrorException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::IntOverflowException", IntOverflowException),
    {nullptr, nullptr, nullptr, nullptr},
};

} // namespace detail
} // namespace qv
