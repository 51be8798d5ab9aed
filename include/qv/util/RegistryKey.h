#ifndef QV_UTIL_REGISTRYKEY_H
#define QV_UTIL_REGISTRYKEY_H

#include <qv/core/Export.h>
#include <qv/lang/String.h>
#include <qvcore3/qvcore3.h>

namespace qv {
namespace util {

// A key of the key store (the platform layer's QVRegistry* calls): keys hold
// subkeys and string values; key and value names compare without regard to
// ASCII case. A key path joins names with '\'; a null or empty path names
// the key itself. Every failure of the store is thrown as ResultException
// with its code: 0x80070002 for a missing key or value, 0x80070057 for a name
// the store refuses, 0x8007000D for a damaged value.
//
// Owns its handle: movable, not copyable. The roots need no closing.
class QV_EXPORT RegistryKey {
public:
    RegistryKey() noexcept = default;
    ~RegistryKey();
    RegistryKey(RegistryKey&& other) noexcept;
    RegistryKey& operator=(RegistryKey&& other) noexcept;
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    // The class-registration root, where modules register their classes.
    static RegistryKey classesRoot() noexcept;
    static RegistryKey currentUser() noexcept;
    static RegistryKey localMachine() noexcept;

    bool isOpen() const noexcept { return m_handle != QV_INVALID_HANDLE; }
    QVHANDLE getHandle() const noexcept { return m_handle; }
    void close();

    // Opens the key, making whatever of the path is missing.
    RegistryKey createKey(const char16_t* subKey) const;
    // Opens an existing key.
    RegistryKey openKey(const char16_t* subKey) const;
    bool hasKey(const char16_t* subKey) const;
    // Removes the key with all its subkeys and values.
    void deleteKey(const char16_t* subKey) const;

    // name null or empty: the key's default value.
    void setValue(const char16_t* name, const String& value) const;
    String getValue(const char16_t* name) const;
    bool hasValue(const char16_t* name) const;
    void deleteValue(const char16_t* name) const;

    // The index-th subkey or value name in ASCII-case-insensitive order;
    // false past the last one.
    bool enumSubKey(uint32_t index, String& name) const;
    bool enumValue(uint32_t index, String& name) const;

private:
    explicit RegistryKey(QVHANDLE handle) noexcept : m_handle(handle) {}

    QVHANDLE m_handle = QV_INVALID_HANDLE;
};

} // namespace util
} // namespace qv

#endif
