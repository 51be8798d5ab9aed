#ifndef QV_UTIL_ROBYTEBUFFER_H
#define QV_UTIL_ROBYTEBUFFER_H

// qv::util::ROByteBuffer is an instantiation of the buffer family in BasicBuffer.h.
#include <qv/util/BasicBuffer.h>

#endif
