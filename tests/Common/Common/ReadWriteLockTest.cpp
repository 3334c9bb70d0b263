#include "Common/Common/ReadWriteLock.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "Common/Common/Exception.h"
#include "tests/TestLatch.h"

namespace {

using Zelmarik::CReadWriteLock;
using Zelmarik::DebugLocksSettings;
using Zelmarik::LockOwnerInfo;

CReadWriteLock DebuggedLock() {
    return CReadWriteLock(DebugLocksSettings{1, -1});
}

TEST(ReadWriteLockSwitch, EitherSettingAboveZeroRecordsOwners) {
    const std::pair<DebugLocksSettings, bool> cases[] = {
        {{1, -1}, true}, {{-1, 1}, true}, {{0, 0}, false}, {{-1, -1}, false}};
    for (const auto& [settings, enabled] : cases) {
        const CReadWriteLock lock(settings);
        EXPECT_EQ(lock.Debug != nullptr, enabled) << settings.Machine << " " << settings.User;
    }
}

TEST(ReadWriteLockOwners, WriterIsRecordedWithItsTraceUntilRelease) {
    CReadWriteLock lock = DebuggedLock();
    const Zelmarik::ScopeTraceFrame outer("outer");
    const Zelmarik::ScopeTraceFrame inner("inner");
    lock.LockExclusive("Common\\Paths\\PathsCache", "Store", 42);
    {
        const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
        const LockOwnerInfo& owner = lock.Debug->ExclusiveOwner;
        EXPECT_EQ(owner.File + owner.Function, "Common\\Paths\\PathsCacheStore");
        EXPECT_EQ(owner.Line, 42);
        EXPECT_NE(owner.ThreadId, 0u);
        // Some time after 2020, in 100 ns ticks since 1970.
        EXPECT_GT(owner.Time, 15'778'368'000'000'000ull);
        if (!Zelmarik::StackTraceDisabled) {
            EXPECT_EQ(owner.StackTrace, "StackTrace:\r\ninner\r\nouter");
        }
    }
    lock.UnlockExclusive();
    const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
    const LockOwnerInfo& owner = lock.Debug->ExclusiveOwner;
    EXPECT_TRUE(owner.File.empty() && owner.Function.empty());
    EXPECT_EQ(owner.Line, -1);
    EXPECT_EQ(owner.ThreadId, 0u);
    EXPECT_EQ(owner.Time, 0u);
}

TEST(ReadWriteLockOwners, EachReaderThreadHasItsOwnEntry) {
    CReadWriteLock lock = DebuggedLock();
    TestLatch bothIn(3);
    TestLatch firstMayLeave(2);
    TestLatch firstLeft(2);
    TestLatch secondMayLeave(2);
    std::thread first([&] {
        lock.LockShared("a.cpp", "First", 10);
        bothIn.arrive_and_wait();
        firstMayLeave.arrive_and_wait();
        lock.UnlockShared();
        firstLeft.arrive_and_wait();
    });
    std::thread second([&] {
        lock.LockShared("b.cpp", "Second", 20);
        bothIn.arrive_and_wait();
        secondMayLeave.arrive_and_wait();
        lock.UnlockShared();
    });
    auto functions = [&lock] {
        const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
        std::string names;
        for (const auto& [thread, owner] : lock.Debug->SharedOwners) {
            EXPECT_EQ(thread, owner.ThreadId);
            names += owner.Function + ";";
        }
        return names;
    };

    bothIn.arrive_and_wait();
    const std::string both = functions();
    EXPECT_TRUE(both == "First;Second;" || both == "Second;First;") << both;
    firstMayLeave.arrive_and_wait();
    firstLeft.arrive_and_wait();
    EXPECT_EQ(functions(), "Second;");
    secondMayLeave.arrive_and_wait();
    first.join();
    second.join();
    EXPECT_EQ(functions(), "");
}

}  // namespace
