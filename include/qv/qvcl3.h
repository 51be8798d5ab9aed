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

#endif
