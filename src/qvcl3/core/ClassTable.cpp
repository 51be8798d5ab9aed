#include "core/ClassTable.h"

#include <qv/core/Exception.h>
#include <qv/core/ExternalException.h>
#include <qv/io/IoException.h>
#include <qv/lang/Double.h>
#include <qv/lang/Float.h>
#include <qv/lang/Integer16.h>
#include <qv/lang/Integer32.h>
#include <qv/lang/Integer64.h>
#include <qv/lang/Integer8.h>
#include <qv/lang/String.h>
#include <qv/lang/UInteger16.h>
#include <qv/lang/UInteger32.h>
#include <qv/lang/UInteger64.h>
#include <qv/lang/UInteger8.h>
#include <qv/math/BigDecimal.h>
#include <qv/math/BigInteger.h>
#include <qv/sync/Condition.h>
#include <qv/sync/Event.h>
#include <qv/sync/FakeMutex.h>
#include <qv/sync/Gate.h>
#include <qv/sync/Mutex.h>
#include <qv/sync/ReaderWriterLock.h>
#include <qv/sync/Semaphore.h>
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
    QV_CLASS_ROW(u"qv::Double", Double),
    QV_CLASS_ROW(u"qv::Exception", Exception),
    QV_CLASS_ROW_NO_CREATOR(u"qv::ExternalException", ExternalException),
    QV_CLASS_ROW(u"qv::Float", Float),
    QV_CLASS_ROW(u"qv::IllegalAccessException", IllegalAccessException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::IllegalInstructionException", IllegalInstructionException),
    QV_CLASS_ROW(u"qv::IllegalStateException", IllegalStateException),
    QV_CLASS_ROW(u"qv::IntDivByZeroException", IntDivByZeroException),
    QV_CLASS_ROW(u"qv::IntErrorException", IntErrorException),
    QV_CLASS_ROW(u"qv::IntOverflowException", IntOverflowException),
    QV_CLASS_ROW(u"qv::Integer16", Integer16),
    QV_CLASS_ROW(u"qv::Integer32", Integer32),
    QV_CLASS_ROW(u"qv::Integer64", Integer64),
    QV_CLASS_ROW(u"qv::Integer8", Integer8),
    QV_CLASS_ROW(u"qv::InvalidPathException", InvalidPathException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::MathDivByZeroException", MathDivByZeroException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::MathErrorException", MathErrorException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::MathInvalidOpException", MathInvalidOpException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::MathOverflowException", MathOverflowException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::MathUnderflowException", MathUnderflowException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::Number", Number),
    QV_CLASS_ROW(u"qv::Object", Object),
    QV_CLASS_ROW(u"qv::OutOfMemoryException", OutOfMemoryException),
    QV_CLASS_ROW(u"qv::RangeErrorException", RangeErrorException),
    QV_CLASS_ROW(u"qv::ReadOnlyException", ReadOnlyException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::SignedInteger", SignedInteger),
    QV_CLASS_ROW_NO_CREATOR(u"qv::StackOverflowException", StackOverflowException),
    QV_CLASS_ROW(u"qv::String", String),
    QV_CLASS_ROW(u"qv::UInteger16", UInteger16),
    QV_CLASS_ROW(u"qv::UInteger32", UInteger32),
    QV_CLASS_ROW(u"qv::UInteger64", UInteger64),
    QV_CLASS_ROW(u"qv::UInteger8", UInteger8),
    QV_CLASS_ROW_NO_CREATOR(u"qv::UnsignedInteger", UnsignedInteger),
    QV_CLASS_ROW(u"qv::UnsupportedOperationException", UnsupportedOperationException),
    QV_CLASS_ROW_NO_CREATOR(u"qv::UserAbortException", UserAbortException),
    QV_CLASS_ROW(u"qv::io::IoException", io::IoException),
    QV_CLASS_ROW(u"qv::io::TimeoutException", io::TimeoutException),
    QV_CLASS_ROW(u"qv::io::UnexpectedEOFException", io::UnexpectedEOFException),
    QV_CLASS_ROW(u"qv::math::BigDecimal", math::BigDecimal),
    QV_CLASS_ROW(u"qv::math::BigInteger", math::BigInteger),
    QV_CLASS_ROW(u"qv::sync::Condition", sync::Condition),
    QV_CLASS_ROW(u"qv::sync::Event", sync::Event),
    QV_CLASS_ROW(u"qv::sync::FakeMutex", sync::FakeMutex),
    QV_CLASS_ROW(u"qv::sync::Gate", sync::Gate),
    QV_CLASS_ROW_NO_CREATOR(u"qv::sync::LockObject", sync::LockObject),
    QV_CLASS_ROW(u"qv::sync::Mutex", sync::Mutex),
    QV_CLASS_ROW_NO_CREATOR(u"qv::sync::Object", sync::Object),
    QV_CLASS_ROW(u"qv::sync::ReaderWriterLock", sync::ReaderWriterLock),
    QV_CLASS_ROW(u"qv::sync::Semaphore", sync::Semaphore),
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
