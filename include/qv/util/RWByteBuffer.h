#ifndef QV_UTIL_RWBYTEBUFFER_H
#define QV_UTIL_RWBYTEBUFFER_H

// qv::util::RWByteBuffer is an instantiation of the buffer family in BasicBuffer.h.
#include <qv/util/BasicBuffer.h>

#endif
