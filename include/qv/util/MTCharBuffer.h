#ifndef QV_UTIL_MTCHARBUFFER_H
#define QV_UTIL_MTCHARBUFFER_H

// qv::util::MTCharBuffer is an instantiation of the buffer family in BasicBuffer.h.
#include <qv/util/BasicBuffer.h>

#endif
