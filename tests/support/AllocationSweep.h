#ifndef QVCL3_TESTS_ALLOCATIONSWEEP_H
#define QVCL3_TESTS_ALLOCATIONSWEEP_H

// The allocation-failure sweep every area runs on its operations: allocation
// 1, 2, 3, ... of the operation fails in turn (operator new and the platform
// allocator both count, through tests/support/CountingOperatorNew.cpp) until
// the operation gets through. Each failure must surface as
// qv::OutOfMemoryException; after each one, `unchanged` checks that the
// objects involved still hold their old values. In the AddressSanitizer
// build, LeakSanitizer then looks for blocks the failed attempts left
// unreachable.

#include <qv/core/Exception.h>
#include <qv/lang/String.h>
#include <qvcore3/qvcore3.h>

#include <gtest/gtest.h>

#include <new>
#include <typeinfo>

#if defined(__SANITIZE_ADDRESS__)
#define QVTEST_LEAK_CHECK 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QVTEST_LEAK_CHECK 1
#endif
#endif
#ifdef QVTEST_LEAK_CHECK
#include <sanitizer/lsan_interface.h>
#endif

namespace qvtest {

inline bool allocationFaultsAvailable()
{
    return QVFaultInjectionAvailable() != 0;
}

// A fixture for tests that sweep allocations: skipped in builds without
// fault injection.
class AllocationFaultTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!allocationFaultsAvailable())
            GTEST_SKIP() << "built without fault injection";
    }
};

// True (and a test failure) when LeakSanitizer finds unreachable blocks now;
// always false without it.
inline bool leaksFound()
{
#ifdef QVTEST_LEAK_CHECK
    if (__lsan_do_recoverable_leak_check() != 0) {
        ADD_FAILURE() << "LeakSanitizer found blocks leaked by the failed attempts (report above)";
        return true;
    }
#endif
    return false;
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
        } catch (const qv::Exception& e) {
            QVFaultDisarmAll();
            ADD_FAILURE() << "allocation " << n << " failed as " << typeid(e).name() << " (0x" << std::hex
                          << static_cast<uint32_t>(e.getResult()) << std::dec << ") " << e.getDescription().toUtf8();
            return failures;
        } catch (...) {
            QVFaultDisarmAll();
            ADD_FAILURE() << "allocation " << n << " failed with an exception other than OutOfMemoryException";
            return failures;
        }
        QVFaultDisarmAll();
        if (!failed) {
            if (failures > 0)
                leaksFound();
            return failures;
        }
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
