#ifndef QV_QVCL3_H
#define QV_QVCL3_H

// Every public header of the class library.
#include <qvcore3/qvcore3.h>
#include <qv/core/Export.h>
#include <qv/core/Version.h>
#include <qv/lang/String.h>
#include <qv/util/IBuffer.h>
#include <qv/util/IByteBuffer.h>
#include <qv/util/ICharBuffer.h>
#include <qv/util/BasicBuffer.h>
#include <qv/util/AbstractByteBuffer.h>
#include <qv/util/AbstractCharBuffer.h>
#include <qv/util/ROByteBuffer.h>
#include <qv/util/ROCharBuffer.h>
#include <qv/util/RWByteBuffer.h>
#include <qv/util/RWCharBuffer.h>
#include <qv/util/MTByteBuffer.h>
#include <qv/util/MTCharBuffer.h>

#include <qv/core/Boundary.h>
#include <qv/core/Class.h>
#include <qv/core/ClassManagerBase.h>
#include <qv/core/ComObject.h>
#include <qv/core/Exception.h>
#include <qv/core/ExternalException.h>
#include <qv/core/Guid.h>
#include <qv/core/IQVUnknown.h>
#include <qv/core/Library.h>
#include <qv/core/Module.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/core/Result.h>
#include <qv/io/IoException.h>
#include <qv/lang/String.h>
#include <qv/math/BigDecimal.h>
#include <qv/math/BigInteger.h>
#include <qv/net/SocketError.h>
#include <qv/sync/Condition.h>
#include <qv/sync/Event.h>
#include <qv/sync/FakeMutex.h>
#include <qv/sync/Gate.h>
#include <qv/sync/LockObject.h>
#include <qv/sync/Mutex.h>
#include <qv/sync/Object.h>
#include <qv/sync/ReaderWriterLock.h>
#include <qv/sync/Semaphore.h>
#include <qv/text/charset/CharsetExceptions.h>
#include <qv/util/Singleton.h>

#endif
