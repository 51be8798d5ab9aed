#ifndef QV_UTIL_ABSTRACTBYTEBUFFER_H
#define QV_UTIL_ABSTRACTBYTEBUFFER_H

// qv::util::AbstractByteBuffer is an instantiation of the buffer family in BasicBuffer.h.
#include <qv/util/BasicBuffer.h>

#endif
