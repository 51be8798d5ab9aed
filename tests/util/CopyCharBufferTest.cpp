// QVCopyCharBuffer throws a failing lock operation's code and releases
// nothing on the way out: the caller gives back what it knows to be held.

#include <qv/core/Exception.h>
#include <qv/util/BasicBuffer.h>
#include <qv/util/ICharBuffer.h>

#include <gtest/gtest.h>

#include "Thrown.h"

#include <thread>

using namespace qv;
using namespace qv::util;

namespace {

constexpr Result accessDenied = static_cast<Result>(0x80070005u);

enum class Failing { Nothing, GetReadLock, ReleaseReadLock, GetWriteLock, ReleaseWriteLock };

// A thread-safe buffer that counts the locks held on it and can be told to
// fail one lock operation with accessDenied (after doing its work, for the
// releases, so that the lock is really given back).
class ProbeBuffer : public MTCharBuffer {
public:
    ProbeBuffer(const char16_t* text, int32_t length, Failing failing) : MTCharBuffer(text, length), m_failing(failing)
    {}

    const char16_t* getReadLock() const override
    {
        failIf(Failing::GetReadLock);
        const char16_t* data = MTCharBuffer::getReadLock();
        ++m_readLocks;
        return data;
    }
    void releaseReadLock() const override
    {
        --m_readLocks;
        MTCharBuffer::releaseReadLock();
        failIf(Failing::ReleaseReadLock);
    }
    char16_t* getWriteLock(int32_t minCapacity) override
    {
        failIf(Failing::GetWriteLock);
        char16_t* data = MTCharBuffer::getWriteLock(minCapacity);
        ++m_writeLocks;
        return data;
    }
    void releaseWriteLock(int32_t newLength) override
    {
        --m_writeLocks;
        MTCharBuffer::releaseWriteLock(newLength);
        failIf(Failing::ReleaseWriteLock);
    }

    int readLocks() const { return m_readLocks; }
    int writeLocks() const { return m_writeLocks; }

private:
    void failIf(Failing which) const
    {
        if (m_failing == which) {
            throw ResultException(accessDenied);
        }
    }

    Failing m_failing;
    mutable int m_readLocks = 0;
    int m_writeLocks = 0;
};

TEST(CopyCharBufferFailure, AFailingLockOperationIsThrownAndNothingIsReleasedOnTheWayOut)
{
    struct Case {
        Failing source;
        Failing target;
        int writeLocksLeft;
    };
    const Case cases[] = {
        {Failing::Nothing, Failing::GetWriteLock, 0},
        {Failing::GetReadLock, Failing::Nothing, 1},
        {Failing::ReleaseReadLock, Failing::Nothing, 1},
        {Failing::Nothing, Failing::ReleaseWriteLock, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "source " << static_cast<int>(c.source) << ", target "
                                        << static_cast<int>(c.target));
        ProbeBuffer source(u"copied", 6, c.source);
        ProbeBuffer target(u"old", 3, c.target);
        EXPECT_EQ(qvtest::resultOf<ResultException>([&] { QVCopyCharBuffer(&target, &source); }), accessDenied);
        // A release that fails after its work leaves the copy in place.
        if (c.target == Failing::ReleaseWriteLock) {
            EXPECT_EQ(std::u16string(target.GetData(), static_cast<size_t>(target.GetLength())), u"copied");
        }
        EXPECT_EQ(source.readLocks(), 0);
        EXPECT_EQ(target.writeLocks(), c.writeLocksLeft);
        if (target.writeLocks() == 1) {
            target.MTCharBuffer::releaseWriteLock(-1);
        }
        // Another thread can now take both buffers' exclusive locks.
        std::thread other([&] {
            target.MTCharBuffer::getWriteLock(0);
            target.MTCharBuffer::releaseWriteLock(-1);
            source.MTCharBuffer::getWriteLock(0);
            source.MTCharBuffer::releaseWriteLock(-1);
        });
        other.join();
    }
}

TEST(CopyCharBufferFailure, AReadOnlyTargetThrowsNotImplementedAndKeepsItsText)
{
    RWCharBuffer source(u"hello", 5);
    ROCharBuffer readOnly(u"abc", 3);
    EXPECT_EQ(qvtest::resultOf<ResultException>([&] { QVCopyCharBuffer(&readOnly, &source); }), results::NOTIMPL);
    EXPECT_EQ(std::u16string(readOnly.GetData(), 3), u"abc");
}

} // namespace
