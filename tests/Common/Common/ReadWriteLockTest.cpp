#include "Common/Common/ReadWriteLock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "Common/Common/Exception.h"
#include "platform/DebugSwitch.h"

namespace {

using Zelmarik::CReadWriteLock;
using Zelmarik::DebugLocksSettings;

CReadWriteLock DebuggedLock() {
    return CReadWriteLock(DebugLocksSettings{1, -1});
}

std::size_t SharedOwnerCount(CReadWriteLock& lock) {
    const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
    return lock.Debug->SharedOwners.size();
}

TEST(ReadWriteLockSwitch, EitherSettingAboveZeroRecordsOwners) {
    struct Case {
        DebugLocksSettings settings;
        bool enabled;
    };
    const Case cases[] = {
        {{1, -1}, true},   {{-1, 1}, true},  {{0, 7}, true},   {{0, 0}, false},
        {{-1, -1}, false}, {{0, -1}, false}, {{-5, 0}, false},
    };
    for (const Case& c : cases) {
        CReadWriteLock lock(c.settings);
        EXPECT_EQ(lock.DebugEnabled, c.enabled) << c.settings.Machine << " " << c.settings.User;
        EXPECT_EQ(lock.Debug != nullptr, c.enabled);
        EXPECT_EQ(Zelmarik::MachineDebugLocks.load(), c.settings.Machine);
        EXPECT_EQ(Zelmarik::UserDebugLocks.load(), c.settings.User);
    }
}

TEST(ReadWriteLockSwitch, PlainConstructorReadsBothSettings) {
    const CReadWriteLock lock;
    const std::int32_t machine = platform::MachineDebugLocks();
    const std::int32_t user = platform::UserDebugLocks();
    EXPECT_EQ(Zelmarik::MachineDebugLocks.load(), machine);
    EXPECT_EQ(Zelmarik::UserDebugLocks.load(), user);
    EXPECT_EQ(lock.DebugEnabled, machine >= 1 || user >= 1);
}

TEST(ReadWriteLockOwners, WriterIsRecordedUntilRelease) {
    CReadWriteLock lock(DebugLocksSettings{-1, 1});
    lock.LockExclusive("Common\\Paths\\PathsCache", "Store", 42);
    {
        const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
        const Zelmarik::LockOwnerInfo& owner = lock.Debug->ExclusiveOwner;
        EXPECT_EQ(owner.File, "Common\\Paths\\PathsCache");
        EXPECT_EQ(owner.Function, "Store");
        EXPECT_EQ(owner.Line, 42);
        EXPECT_NE(owner.ThreadId, 0u);
        // Any time after 2020 in 100 ns ticks since 1970.
        EXPECT_GT(owner.Time, 15'778'368'000'000'000ull);
    }
    lock.UnlockExclusive();
    const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
    const Zelmarik::LockOwnerInfo& owner = lock.Debug->ExclusiveOwner;
    EXPECT_TRUE(owner.File.empty());
    EXPECT_TRUE(owner.Function.empty());
    EXPECT_EQ(owner.Line, -1);
    EXPECT_EQ(owner.ThreadId, 0u);
    EXPECT_EQ(owner.Time, 0u);
}

TEST(ReadWriteLockOwners, WriterWithoutPositionKeepsDefaults) {
    CReadWriteLock lock = DebuggedLock();
    lock.LockExclusive();
    {
        const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
        EXPECT_TRUE(lock.Debug->ExclusiveOwner.File.empty());
        EXPECT_EQ(lock.Debug->ExclusiveOwner.Line, -1);
        EXPECT_NE(lock.Debug->ExclusiveOwner.ThreadId, 0u);
    }
    lock.UnlockExclusive();
}

TEST(ReadWriteLockOwners, TraceOfTheThreadGoesIntoTheRecord) {
    if (Zelmarik::StackTraceDisabled) {
        GTEST_SKIP() << "traces are off for this program name";
    }
    CReadWriteLock lock = DebuggedLock();
    const Zelmarik::ScopeTraceFrame outer("outer");
    const Zelmarik::ScopeTraceFrame inner("inner");
    lock.LockExclusive("f", "g", 1);
    {
        const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
        EXPECT_EQ(lock.Debug->ExclusiveOwner.StackTrace, "StackTrace:\r\ninner\r\nouter");
    }
    lock.UnlockExclusive();
}

TEST(ReadWriteLockOwners, EachReaderThreadHasItsOwnEntry) {
    CReadWriteLock lock = DebuggedLock();
    std::latch bothIn(3);
    std::latch firstMayLeave(2);
    std::latch firstLeft(2);
    std::latch secondMayLeave(2);

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

    bothIn.arrive_and_wait();
    {
        const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
        ASSERT_EQ(lock.Debug->SharedOwners.size(), 2u);
        std::vector<std::string> functions;
        for (const auto& [thread, owner] : lock.Debug->SharedOwners) {
            EXPECT_EQ(thread, owner.ThreadId);
            functions.push_back(owner.Function);
        }
        std::sort(functions.begin(), functions.end());
        EXPECT_EQ(functions, (std::vector<std::string>{"First", "Second"}));
    }
    firstMayLeave.arrive_and_wait();
    firstLeft.arrive_and_wait();
    {
        const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
        ASSERT_EQ(lock.Debug->SharedOwners.size(), 1u);
        EXPECT_EQ(lock.Debug->SharedOwners.begin()->second.Function, "Second");
    }
    secondMayLeave.arrive_and_wait();
    first.join();
    second.join();
    EXPECT_EQ(SharedOwnerCount(lock), 0u);
}

TEST(ReadWriteLockOwners, ReaderWithoutFullPositionLeavesNoEntry) {
    CReadWriteLock lock = DebuggedLock();
    lock.LockShared(nullptr, "Function", 5);
    EXPECT_EQ(SharedOwnerCount(lock), 0u);
    lock.UnlockShared();
    lock.LockShared("file", "Function", -1);
    EXPECT_EQ(SharedOwnerCount(lock), 0u);
    lock.UnlockShared();
    // The lock is free again: a writer gets it at once.
    EXPECT_TRUE(lock.try_lock());
    lock.unlock();
}

// Writers keep two counters equal under the lock; readers must never see them apart.
void RunReadersAndWriters(CReadWriteLock& lock) {
    long first = 0;
    long second = 0;
    std::atomic<bool> torn{false};
    constexpr int kRounds = 2000;
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kRounds; ++i) {
                lock.LockExclusive(__FILE__, "writer", __LINE__);
                ++first;
                ++second;
                lock.UnlockExclusive();
            }
        });
        threads.emplace_back([&] {
            for (int i = 0; i < kRounds; ++i) {
                lock.LockShared(__FILE__, "reader", __LINE__);
                if (first != second) {
                    torn = true;
                }
                lock.UnlockShared();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(torn);
    EXPECT_EQ(first, 2 * kRounds);
    EXPECT_EQ(second, 2 * kRounds);
}

TEST(ReadWriteLockThreads, ExcludesWritersWithoutRecords) {
    CReadWriteLock lock(DebugLocksSettings{0, 0});
    RunReadersAndWriters(lock);
}

TEST(ReadWriteLockThreads, ExcludesWritersWithRecords) {
    CReadWriteLock lock = DebuggedLock();
    RunReadersAndWriters(lock);
    EXPECT_EQ(SharedOwnerCount(lock), 0u);
    const std::lock_guard<std::mutex> hold(lock.Debug->Guard);
    EXPECT_EQ(lock.Debug->ExclusiveOwner.ThreadId, 0u);
}

}  // namespace
