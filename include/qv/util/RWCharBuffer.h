#ifndef QV_UTIL_RWCHARBUFFER_H
#define QV_UTIL_RWCHARBUFFER_H

// qv::util::RWCharBuffer is an instantiation of the buffer family in BasicBuffer.h.
#include <qv/util/BasicBuffer.h>

#endif
