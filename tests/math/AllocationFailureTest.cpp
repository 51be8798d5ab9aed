// Fails each allocation of an operation in turn (the platform layer's fault
// injection, reached through this program's operator new):
// every failure must surface as qv::OutOfMemoryException and leave the
// operands as they were; the sanitizer build checks for leaks.

#include <qv/core/Exception.h>
#include <qv/math/BigDecimal.h>
#include <qv/math/BigInteger.h>
#include <qvcore3/qvcore3.h>

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>

// Every allocation of this program goes through the platform allocator,
// whose armed failure makes the nth one return null.
void* operator new(std::size_t size)
{
    for (;;) {
        if (void* p = QVMemAlloc(size))
            return p;
        std::new_handler handler = std::get_new_handler();
        if (!handler)
            throw std::bad_alloc();
        handler();
    }
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return operator new(size, std::nothrow);
}

void operator delete(void* p) noexcept
{
    QVMemFree(p);
}

void operator delete(void* p, const std::nothrow_t&) noexcept
{
    QVMemFree(p);
}

void operator delete[](void* p, const std::nothrow_t&) noexcept
{
    QVMemFree(p);
}

void operator delete[](void* p) noexcept
{
    QVMemFree(p);
}

void operator delete(void* p, std::size_t) noexcept
{
    QVMemFree(p);
}

void operator delete[](void* p, std::size_t) noexcept
{
    QVMemFree(p);
}

using qv::math::BigDecimal;
using qv::math::BigInteger;

namespace {

// Runs op with its first, second, ... allocation failing until it gets
// through; returns how many failures it met.
int failEachAllocation(const std::function<void()>& op)
{
    int failures = 0;
    for (int n = 1; n < 100000; ++n) {
        bool failed = false;
        QVFaultArmAllocation(n);
        try {
            op();
        } catch (const qv::OutOfMemoryException&) {
            failed = true;
        } catch (const std::bad_alloc&) {
            QVFaultDisarmAll();
            ADD_FAILURE() << "allocation " << n << " failed as a plain std::bad_alloc";
            return failures;
        }
        QVFaultDisarmAll();
        if (!failed)
            return failures;
        ++failures;
    }
    ADD_FAILURE() << "never got through";
    return failures;
}

} // namespace

TEST(MathAllocationFailure, EveryFailedAllocationThrowsAndChangesNothing)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "built without fault injection";
    // Big enough for Toom-3, the recursive division and the divide and
    // conquer radix conversion.
    const BigInteger a = BigInteger(7).pow(13000) + 12345;
    const BigInteger b = BigInteger(-3).pow(12001) + 1;
    const std::string aText = a.toStdString(), bText = b.toStdString();
    const BigDecimal d(b, 40);

    const std::function<void()> ops[] = {
        [&] { BigInteger r = a * (a + 1); },
        [&] { auto qr = (a * a).divideAndRemainder(b); },
        [&] { std::string s = a.toStdString(); },
        [&] { BigInteger r(aText); },
        [&] { BigInteger r = (a >> 30000).gcd(b >> 15000); },
        [&] { BigInteger r = BigInteger(12345).modPow(b.abs() >> 18000, BigInteger(1000003)); },
        [&] { BigInteger r = a.bitXor(b).shiftRight(77); },
        [&] { BigDecimal q = d.divide(BigDecimal(7), 50, BigDecimal::ROUND_HALF_EVEN); },
        [&] { qv::String s = d.toString(); },
        [&] {
            BigInteger target = 42;
            try {
                target = a;
            } catch (const qv::OutOfMemoryException&) {
                EXPECT_EQ(target, BigInteger(42)) << "a failed assignment changed its target";
                throw;
            }
        },
    };
    for (const auto& op : ops)
        EXPECT_GT(failEachAllocation(op), 0);
    EXPECT_EQ(a.toStdString(), aText);
    EXPECT_EQ(b.toStdString(), bText);
}
