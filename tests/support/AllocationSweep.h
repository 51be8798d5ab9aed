#ifndef QVCL3_TESTS_ALLOCATIONSWEEP_H
#define QVCL3_TESTS_ALLOCATIONSWEEP_H

// The allocation-failure sweep every area runs on its operations: allocation
// 1, 2, 3, ... of the operation fails in turn (operator new and the platform
// allocator both count, through tests/support/CountingOperatorNew.cpp) until
// the operation gets through. Each failure must surface as
// qv::OutOfMemoryException; after each one, `unchanged` checks that the
// objects involved still hold their old values. Leaks show up in the
// sanitizer build.

#include <qv/core/Exception.h>
#include <qvcore3/qvcore3.h>

#include <gtest/gtest.h>

#include <new>

namespace qvtest {

inline bool allocationFaultsAvailable()
{
    return QVFaultInjectionAvailable() != 0;
}

// Returns how many allocations failed before the operation got through.
template <class Operation, class Check>
int sweepAllocations(Operation&& operation, Check&& unchanged, int limit = 100000)
{
    int failures = 0;
    for (int n = 1; n <= limit; ++n) {
        bool failed = false;
        QVFaultArmAllocation(n);
        try {
            operation();
        } catch (const qv::OutOfMemoryException&) {
            failed = true;
        } catch (const std::bad_alloc&) {
            QVFaultDisarmAll();
            ADD_FAILURE() << "allocation " << n << " failed as a plain std::bad_alloc";
            return failures;
        } catch (...) {
            QVFaultDisarmAll();
            ADD_FAILURE() << "allocation " << n << " failed with an exception other than OutOfMemoryException";
            return failures;
        }
        QVFaultDisarmAll();
        if (!failed)
            return failures;
        ++failures;
        unchanged();
    }
    ADD_FAILURE() << "the operation never got through";
    return failures;
}

template <class Operation>
int sweepAllocations(Operation&& operation)
{
    return sweepAllocations(operation, [] {});
}

} // namespace qvtest

#endif
