#ifndef QVCL3_TESTS_QVTEXTPRINTING_H
#define QVCL3_TESTS_QVTEXTPRINTING_H

#include <qv/lang/String.h>

#include <ostream>

// Lets gtest show Strings as UTF-8 in failure messages.
namespace qv {
inline void PrintTo(const String& text, std::ostream* out)
{
    *out << '"' << text.toUtf8() << '"';
}
} // namespace qv

#endif
