#ifndef QV_EXEC_SHAREDLIBRARY_H
#define QV_EXEC_SHAREDLIBRARY_H

#include <qv/core/Object.h>
#include <qv/core/TextSpelling.h>

#include <cstdint>

namespace qv {
namespace exec {

// A shared object loaded into this process for the life of this object.
// Addresses taken from it are valid only while it lives.
class QV_EXPORT SharedLibrary : public Object {
public:
    // A path with a slash is taken as it is; a bare name is searched the
    // system's way. ResultException "Failed to open shared library." with the
    // platform's code (0x80070002 for a missing file, 0x800700C1 for one that
    // is no loadable object).
    explicit SharedLibrary(const char16_t* path);
    template <class T, IfUShortText<T> = 0>
    explicit SharedLibrary(const T* path) : SharedLibrary(reinterpret_cast<const char16_t*>(path))
    {}
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;
    // Throws ResultException when the platform fails to unload it.
    ~SharedLibrary() noexcept(false) override;

    // The address of an exported symbol. ResultException "Failed to get
    // symbol." with the platform's code (0x8007007F when there is none).
    void* getSymbol(const char16_t* name) const;
    template <class T, IfUShortText<T> = 0>
    void* getSymbol(const T* name) const
    {
        return getSymbol(reinterpret_cast<const char16_t*>(name));
    }

private:
    int32_t m_handle;
};

} // namespace exec
} // namespace qv

#endif
