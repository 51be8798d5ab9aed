#ifndef QV_UTIL_MTBYTEBUFFER_H
#define QV_UTIL_MTBYTEBUFFER_H

// qv::util::MTByteBuffer is an instantiation of the buffer family in BasicBuffer.h.
#include <qv/util/BasicBuffer.h>

#endif
