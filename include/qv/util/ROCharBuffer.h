#ifndef QV_UTIL_ROCHARBUFFER_H
#define QV_UTIL_ROCHARBUFFER_H

// qv::util::ROCharBuffer is an instantiation of the buffer family in BasicBuffer.h.
#include <qv/util/BasicBuffer.h>

#endif
