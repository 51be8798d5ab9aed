#include <qv/core/Boundary.h>
#include <qv/util/RegistryKey.h>

#include <string>

namespace qv {
namespace util {

namespace {

// The store reports its own allocation failures as a code; they surface as
// the library's out-of-memory exception like any other.
void check(Result result)
{
    if (result == results::OUTOFMEMORY)
        throw OutOfMemoryException();
    qvcom::throwIfFailed(result);
}

// Reads a value or name whose length is only known by asking; loops in case
// another process makes it longer in between.
template <class Read>
Result readGrowing(const Read& read, String& text)
{
    int32_t length = 0;
    Result result = read(nullptr, 0, &length);
    while (result == results::BUFFER_TOO_SMALL) {
        std::u16string buffer(static_cast<size_t>(length) + 1, u'\0');
        result = read(&buffer[0], length + 1, &length);
        if (result >= 0)
            text = String(buffer.data(), length);
    }
    return result;
}

// False past the last name; any other failure throws.
template <class Enumerate>
bool enumerate(const Enumerate& call, String& name)
{
    const Result result = readGrowing(call, name);
    if (result == results::NO_MORE_ITEMS)
        return false;
    check(result);
    return true;
}

} // namespace

RegistryKey::~RegistryKey()
{
    QVRegistryCloseKey(m_handle);
}

RegistryKey::RegistryKey(RegistryKey&& other) noexcept : m_handle(other.m_handle)
{
    other.m_handle = QV_INVALID_HANDLE;
}

RegistryKey& RegistryKey::operator=(RegistryKey&& other) noexcept
{
    if (this != &other) {
        QVRegistryCloseKey(m_handle);
        m_handle = other.m_handle;
        other.m_handle = QV_INVALID_HANDLE;
    }
    return *this;
}

RegistryKey RegistryKey::classesRoot() noexcept
{
    return RegistryKey(QV_HKEY_CLASSES_ROOT);
}

RegistryKey RegistryKey::currentUser() noexcept
{
    return RegistryKey(QV_HKEY_CURRENT_USER);
}

RegistryKey RegistryKey::localMachine() noexcept
{
    return RegistryKey(QV_HKEY_LOCAL_MACHINE);
}

void RegistryKey::close()
{
    const QVHANDLE handle = m_handle;
    m_handle = QV_INVALID_HANDLE;
    if (handle != QV_INVALID_HANDLE)
        check(QVRegistryCloseKey(handle));
}

RegistryKey RegistryKey::createKey(const char16_t* subKey) const
{
    QVHANDLE handle = QV_INVALID_HANDLE;
    check(QVRegistryCreateKey(m_handle, subKey, &handle));
    return RegistryKey(handle);
}

RegistryKey RegistryKey::openKey(const char16_t* subKey) const
{
    QVHANDLE handle = QV_INVALID_HANDLE;
    check(QVRegistryOpenKey(m_handle, subKey, &handle));
    return RegistryKey(handle);
}

bool RegistryKey::hasKey(const char16_t* subKey) const
{
    QVHANDLE handle = QV_INVALID_HANDLE;
    const Result result = QVRegistryOpenKey(m_handle, subKey, &handle);
    if (result == results::FILE_NOT_FOUND)
        return false;
    check(result);
    QVRegistryCloseKey(handle);
    return true;
}

void RegistryKey::deleteKey(const char16_t* subKey) const
{
    check(QVRegistryDeleteKey(m_handle, subKey));
}

void RegistryKey::setValue(const char16_t* name, const String& value) const
{
    const char16_t* text = value.getData();
    check(QVRegistrySetValue(m_handle, name, text ? text : u"", value.getLength()));
}

String RegistryKey::getValue(const char16_t* name) const
{
    String value;
    check(readGrowing([&](char16_t* buffer, int32_t capacity,
                          int32_t* length) { return QVRegistryGetValue(m_handle, name, buffer, capacity, length); },
                      value));
    return value;
}

bool RegistryKey::hasValue(const char16_t* name) const
{
    const Result result = QVRegistryGetValue(m_handle, name, nullptr, 0, nullptr);
    if (result == results::FILE_NOT_FOUND)
        return false;
    if (result != results::BUFFER_TOO_SMALL)
        check(result);
    return true;
}

void RegistryKey::deleteValue(const char16_t* name) const
{
    check(QVRegistryDeleteValue(m_handle, name));
}

bool RegistryKey::enumSubKey(uint32_t index, String& name) const
{
    return enumerate([&](char16_t* buffer, int32_t capacity,
                         int32_t* length) { return QVRegistryEnumKey(m_handle, index, buffer, capacity, length); },
                     name);
}

bool RegistryKey::enumValue(uint32_t index, String& name) const
{
    return enumerate([&](char16_t* buffer, int32_t capacity,
                         int32_t* length) { return QVRegistryEnumValue(m_handle, index, buffer, capacity, length); },
                     name);
}

} // namespace util
} // namespace qv
