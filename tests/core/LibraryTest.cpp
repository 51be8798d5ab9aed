#include <qv/core/Class.h>
#include <qv/core/ClassManagerBase.h>
#include <qv/core/Exception.h>
#include <qv/core/Library.h>
#include <qv/lang/String.h>
#include <qv/sync/LockObject.h>
#include <qv/text/charset/CodecManager.h>
#include <qv/text/charset/EncInfo.h>
#include <qvcore3/qvcore3.h>

#include <gtest/gtest.h>

#include "Thrown.h"

#include <new>

// Loading the library has already started it once.
TEST(Library, StartsAreCountedAndOnlyTheOutermostStopTearsDown)
{
    ASSERT_NE(qv::g_pGlobalLock, nullptr);
    qv::sync::LockObject* lock = qv::g_pGlobalLock;

    EXPECT_EQ(QVCLLibInit(), 0);
    EXPECT_EQ(qv::g_pGlobalLock, lock);
    EXPECT_EQ(QVCLLibUninit(), 0);
    EXPECT_EQ(qv::g_pGlobalLock, lock);
    EXPECT_NE(qv::Class::forName(u"qv::Exception"), nullptr);
    EXPECT_TRUE(qv::Reference<qv::Object>(qv::text::charset::CodecManager::getInstance()->getEncoder(u"ASCII")));

    EXPECT_EQ(QVCLLibUninit(), 0);
    EXPECT_EQ(qv::g_pGlobalLock, nullptr);
    EXPECT_FALSE(qv::ClassManager::hasInstance());
    EXPECT_FALSE(qv::text::charset::CodecManager::hasInstance());
    EncInfo info{};
    uint32_t count = 0;
    EXPECT_EQ(QVGetEncInfoByName(u"UTF-8", &info), static_cast<qv::Result>(0x80004005u));
    EXPECT_EQ(QVEnumerateEncInfo(&count, nullptr), static_cast<qv::Result>(0x80004005u));
    EXPECT_EQ(QVCLLibUninit(), static_cast<qv::Result>(0x80004005u));

    // A new start builds everything again from the static tables.
    EXPECT_EQ(QVCLLibInit(), 0);
    EXPECT_NE(qv::g_pGlobalLock, nullptr);
    EXPECT_NE(qv::Class::forName(u"qv::io::IoException"), nullptr);
    EXPECT_EQ(qv::text::charset::CodecManager::getInstance()->getCodecCount(), 44);
    EXPECT_TRUE(qv::Reference<qv::Object>(qv::text::charset::CodecManager::getInstance()->getDecoder(u"ASCII")));
    EXPECT_EQ(QVGetEncInfoByName(u"UTF-8", &info), 0);
    EXPECT_EQ(QVEnumerateEncInfo(&count, nullptr), static_cast<qv::Result>(0x80004009u));
    EXPECT_EQ(count, 24u);
}

TEST(Library, NewHandlerThrowsOutOfMemoryWhileStarted)
{
    std::new_handler installed = std::get_new_handler();
    ASSERT_NE(installed, nullptr);
    EXPECT_EQ(qvtest::resultOf<qv::OutOfMemoryException>(installed), static_cast<qv::Result>(0x8007000Eu));
    EXPECT_EQ(QVCLLibUninit(), 0);
    EXPECT_EQ(std::get_new_handler(), nullptr);
    EXPECT_EQ(QVCLLibInit(), 0);
    EXPECT_EQ(std::get_new_handler(), installed);
}

TEST(Library, SocketLayerStopFailureKeepsLockAndHandler)
{
    if (!QVFaultInjectionAvailable())
        GTEST_SKIP() << "platform built without fault injection";
    std::new_handler installed = std::get_new_handler();
    ASSERT_EQ(QVFaultArm("QVSocketLayerShutdown", 1, 10093), 0);
    EXPECT_EQ(QVCLLibUninit(), static_cast<qv::Result>(0x80004005u));
    QVFaultDisarmAll();
    // Counter and registries are gone; the lock and the handler stay.
    EXPECT_FALSE(qv::ClassManager::hasInstance());
    EXPECT_FALSE(qv::text::charset::CodecManager::hasInstance());
    ASSERT_NE(qv::g_pGlobalLock, nullptr);
    EXPECT_EQ(std::get_new_handler(), installed);
    EXPECT_EQ(QVCLLibUninit(), static_cast<qv::Result>(0x80004005u));

    // A process that goes on must drop the stranded lock itself.
    delete qv::g_pGlobalLock;
    qv::g_pGlobalLock = nullptr;
    EXPECT_EQ(QVCLLibInit(), 0);
    EXPECT_NE(qv::Class::forName(u"qv::Object"), nullptr);
}
