#include <qv/io/Writer.h>

#include <qv/lang/String.h>

#include "io/StreamChecks.h"

namespace qv {
namespace io {

Writer::~Writer() = default;

void Writer::write(const String& text)
{
    write(text.getData(), text.getLength());
}

void Writer::write(char16_t unit)
{
    write(&unit, 1);
}

void Writer::flush() {}

void Writer::close() {}

int32_t Writer::measure(const char16_t* text, int32_t count)
{
    if (count < 0)
        return QVStrLenW(text);
    detail::requireArgument(text || count == 0);
    return count;
}

} // namespace io
} // namespace qv
