#ifndef QVCORE3_SRC_REGISTRYSTORE_H
#define QVCORE3_SRC_REGISTRYSTORE_H

#include <qvcore3/qvcore3.h>

#include <new>
#include <string>
#include <vector>

namespace qvcore3 {

// Runs a body that may allocate through std containers and turns a failed
// allocation into its code: nothing may throw out of this layer.
template <class Body>
QVRESULT GuardAllocation(Body&& body) noexcept
{
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return QV_E_OUTOFMEMORY;
    } catch (...) {
        return QV_E_FAIL;
    }
}

// Splits a key path at '\' into the folder names that stand for its keys on
// disk; QV_E_INVALIDARG for any name the store refuses. A null or empty path
// gives no names.
QVRESULT SplitKeyPath(const char16_t* path, std::vector<std::string>& folders);

// The on-disk file name of a value (null or empty: the default value).
QVRESULT ValueFileName(const char16_t* name, std::string& file);

// UTF-8 (as the store writes it) back to UTF-16; bytes that are not UTF-8
// become U+FFFD.
std::u16string Utf16FromUtf8(const std::string& text);

// Copies text and a NUL into buffer with the QV_E_BUFFER_TOO_SMALL rule.
QVRESULT CopyOut(const std::u16string& text, char16_t* buffer, int32_t capacity, int32_t* length) noexcept;

// Reads the default value of a key below the classes root.
QVRESULT ReadClassesRootDefault(const std::u16string& keyPath, std::u16string& value);

} // namespace qvcore3

#endif
