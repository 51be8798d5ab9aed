#include <qvcore3/qvcore3.h>

#include <typeinfo>

QVRESULT QVTypeIsBaseOf(const void* baseType, const void* derivedType, const void* object, int32_t* result) noexcept
{
    if (!baseType || !derivedType || !object || !result)
        return QV_E_POINTER;
    const auto* base = static_cast<const std::type_info*>(baseType);
    const auto* derived = static_cast<const std::type_info*>(derivedType);
    if (*base == *derived) {
        *result = 1;
        return 0;
    }
#if defined(__GXX_ABI_VERSION)
    // The Itanium ABI answers this question for exception handlers: a handler
    // for base catches a thrown derived exactly when derived reaches base
    // through a public, unambiguous path. The adjusted pointer is not needed.
    void* adjusted = const_cast<void*>(object);
    *result = base->__do_catch(derived, &adjusted, 1) ? 1 : 0;
    return 0;
#else
    return QV_E_NOTIMPL;
#endif
}
