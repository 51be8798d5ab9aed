#ifndef QV_IO_STRINGWRITER_H
#define QV_IO_STRINGWRITER_H

#include <qv/io/CharArrayWriter.h>

namespace qv {
namespace io {

// Collects what is written; toString() returns it. The collecting is
// CharArrayWriter's: a StringWriter is one under the name callers look for.
class QV_EXPORT StringWriter : public CharArrayWriter {
public:
    explicit StringWriter(int32_t initialCapacity = 32);
    ~StringWriter() override;
};

} // namespace io
} // namespace qv

#endif
