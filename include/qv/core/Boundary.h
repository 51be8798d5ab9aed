#ifndef QV_CORE_BOUNDARY_H
#define QV_CORE_BOUNDARY_H

#include <qv/core/Exception.h>

#include <new>
#include <type_traits>

namespace qv {
namespace qvcom {

// Runs the body of a component-interface operation or an exported function
// and turns whatever it throws into the result code that crosses the
// boundary: a qv::Exception gives its getResult(), std::bad_alloc
// 0x8007000E, anything else 0x80004005. A body returning void yields 0.
template <class Body>
Result guardBoundary(Body&& body) noexcept
{
    try {
        if constexpr (std::is_void<decltype(body())>::value) {
            body();
            return results::OK;
        } else {
            return static_cast<Result>(body());
        }
    } catch (const Exception& e) {
        return e.getResult();
    } catch (const std::bad_alloc&) {
        return results::OUTOFMEMORY;
    } catch (...) {
        return results::FAIL;
    }
}

// The other direction: a failing code an ordinary member function cannot
// handle is thrown as ResultException; running out of memory is thrown as
// OutOfMemoryException (same code), so that an allocation failure inside the
// platform layer surfaces the way every other one does.
inline void throwIfFailed(Result code)
{
    if (code == results::OUTOFMEMORY)
        throw OutOfMemoryException();
    if (code < 0)
        throw ResultException(code);
}

} // namespace qvcom
} // namespace qv

#endif
