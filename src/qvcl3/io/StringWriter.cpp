#include <qv/io/StringWriter.h>

namespace qv {
namespace io {

StringWriter::StringWriter(int32_t initialCapacity) : CharArrayWriter(initialCapacity) {}

StringWriter::~StringWriter() = default;

} // namespace io
} // namespace qv
