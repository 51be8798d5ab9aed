#ifndef QV_I18N_BUNDLEFORMATEXCEPTION_H
#define QV_I18N_BUNDLEFORMATEXCEPTION_H

#include <qv/core/Exception.h>

namespace qv {
namespace i18n {

// A bundle file that cannot be read as a whole: a malformed line ("bad
// \uXXXX escape", "backslash at the end of the file") with its line number,
// or bytes that are not UTF-8 with their offset. A bundle is loaded whole or
// not at all. Result code 0x8007000D (invalid data).
class QV_EXPORT BundleFormatException : public Exception {
public:
    BundleFormatException();
    // line counts from 1; offset is the byte offset from the file's start.
    // Either may be -1 when it does not apply.
    BundleFormatException(const String& file, int32_t line, int64_t offset, const String& problem);
    BundleFormatException(const BundleFormatException& other);
    BundleFormatException& operator=(const BundleFormatException& other);
    ~BundleFormatException() override;

    String getFileName() const;
    int32_t getLine() const;
    int64_t getOffset() const;
    Result getResult() const override;

private:
    String m_file;
    int32_t m_line;
    int64_t m_offset;
};

} // namespace i18n
} // namespace qv

#endif
