#ifndef QV_UTIL_ABSTRACTCHARBUFFER_H
#define QV_UTIL_ABSTRACTCHARBUFFER_H

// qv::util::AbstractCharBuffer is an instantiation of the buffer family in BasicBuffer.h.
#include <qv/util/BasicBuffer.h>

#endif
