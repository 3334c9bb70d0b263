#include "Common/Common/Concurrent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <latch>
#include <list>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using Concurrent::ConcurrentResourceHolder;
using Concurrent::ExclusiveResourceHolder;
using Concurrent::ResourceOwner;

template <class Holder>
void ExpectNotOwning(Holder& holder, const std::string& text) {
    try {
        static_cast<void>(holder->size());
        FAIL() << "access without the lock did not raise";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), 11);
        EXPECT_EQ(std::string(error.what()).rfind(text, 0), 0u) << error.what();
    }
    EXPECT_THROW(static_cast<void>(*holder), std::system_error);
    EXPECT_THROW(static_cast<void>(holder.begin()), std::system_error);
}

TEST(ResourceHolders, RaiseOnAccessAfterRelease) {
    ResourceOwner<std::vector<int>> owner;
    ExclusiveResourceHolder<std::vector<int>> writer(owner.Keeper);
    writer->push_back(1);
    writer.Release();
    EXPECT_EQ(writer.HeldLock, nullptr);
    ExpectNotOwning(writer, "ExclusiveResourceHolder do not owns the resource!");

    ConcurrentResourceHolder<std::vector<int>> reader(owner);
    EXPECT_EQ(reader->size(), 1u);
    reader.Release();
    ExpectNotOwning(reader, "ConcurrentResourceHolder do not owns the resource!");
}

TEST(ResourceHolders, PassTheirPositionToTheOwnerRecords) {
    ResourceOwner<std::vector<int>> owner;
    owner.Keeper->Lock =
        std::make_shared<Zelmarik::CReadWriteLock>(Zelmarik::DebugLocksSettings{1, 1});
    Zelmarik::LockDebugData& records = *owner.Keeper->Lock->Debug;
    {
        ExclusiveResourceHolder<std::vector<int>> writer(owner.Keeper, "w.cpp", "Write", 7);
        const std::lock_guard<std::mutex> hold(records.Guard);
        EXPECT_EQ(records.ExclusiveOwner.Function, "Write");
        EXPECT_EQ(records.ExclusiveOwner.Line, 7);
    }
    {
        ConcurrentResourceHolder<std::vector<int>> reader(owner, "r.cpp", "Read", 9);
        const std::lock_guard<std::mutex> hold(records.Guard);
        EXPECT_EQ(records.ExclusiveOwner.Line, -1);
        ASSERT_EQ(records.SharedOwners.size(), 1u);
        EXPECT_EQ(records.SharedOwners.begin()->second.File, "r.cpp");
    }
    const std::lock_guard<std::mutex> hold(records.Guard);
    EXPECT_TRUE(records.SharedOwners.empty());
}

TEST(ResourceHolders, ReleaseLetsTheNextWriterIn) {
    ResourceOwner<std::list<int>> owner;
    ExclusiveResourceHolder<std::list<int>> first(owner.Keeper);
    first->push_back(1);
    first.Release();
    // Would block forever if the first holder still had the lock.
    ExclusiveResourceHolder<std::list<int>> second(owner.Keeper);
    second->push_back(2);
    int sum = 0;
    for (int value : second) {
        sum += value;
    }
    EXPECT_EQ(sum, 3);
}

TEST(ResourceHolders, HolderKeepsTheResourceAliveWithoutTheOwner) {
    std::weak_ptr<std::string> resource;
    std::latch holderMade(2);
    std::latch ownerGone(2);
    std::thread holderThread;
    {
        ResourceOwner<std::string> owner;
        {
            ExclusiveResourceHolder<std::string> writer(owner.Keeper);
            *writer = "kept";
        }
        resource = owner.Keeper->Resource;
        holderThread = std::thread([&, keeper = owner.Keeper] {
            ConcurrentResourceHolder<std::string> reader(keeper);
            reader.Release();
            holderMade.arrive_and_wait();
            ownerGone.arrive_and_wait();
        });
        holderMade.arrive_and_wait();
    }
    EXPECT_FALSE(resource.expired());
    ownerGone.arrive_and_wait();
    holderThread.join();
    EXPECT_TRUE(resource.expired());
}

TEST(ResourceHolders, OwnerDestructorWaitsForAReader) {
    auto owner = std::make_unique<ResourceOwner<std::vector<int>>>();
    std::latch readerIn(2);
    std::latch readerMayLeave(2);
    std::atomic<bool> ownerGone{false};
    std::atomic<bool> goneWhileReading{false};

    std::thread reader([&] {
        ConcurrentResourceHolder<std::vector<int>> held(*owner, "test", "reader", 1);
        readerIn.arrive_and_wait();
        readerMayLeave.arrive_and_wait();
        // Give a destructor that does not wait the time to finish.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        goneWhileReading = ownerGone.load();
    });
    readerIn.arrive_and_wait();
    std::thread destroyer([&] {
        owner.reset();
        ownerGone = true;
    });
    readerMayLeave.arrive_and_wait();
    reader.join();
    destroyer.join();
    EXPECT_FALSE(goneWhileReading);
    EXPECT_TRUE(ownerGone);
}

TEST(ResourceHolders, WritersAndReadersOnManyThreads) {
    ResourceOwner<std::vector<int>> owner;
    constexpr int kPerWriter = 500;
    std::atomic<bool> unordered{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kPerWriter; ++i) {
                ExclusiveResourceHolder<std::vector<int>> writer(owner.Keeper, "test", "writer",
                                                                 __LINE__);
                writer->push_back(static_cast<int>(writer->size()));
            }
        });
        threads.emplace_back([&] {
            for (int i = 0; i < kPerWriter; ++i) {
                ConcurrentResourceHolder<std::vector<int>> reader(owner, "test", "reader",
                                                                  __LINE__);
                int expected = 0;
                for (int value : reader) {
                    if (value != expected++) {
                        unordered = true;
                    }
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_FALSE(unordered);
    ConcurrentResourceHolder<std::vector<int>> reader(owner);
    EXPECT_EQ(reader->size(), 3u * kPerWriter);
}

}  // namespace
