#include "Common/Common/Concurrent.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "tests/TestLatch.h"

namespace {

using Concurrent::ConcurrentResourceHolder;
using Concurrent::ExclusiveResourceHolder;
using Concurrent::ResourceOwner;
using Zelmarik::CReadWriteLock;
using Zelmarik::DebugLocksSettings;
using Numbers = std::vector<int>;

// Access without the lock raises value 11 with the holder's own text.
template <class Holder>
void ExpectNotOwning(Holder& holder, const std::string& text) {
    try {
        static_cast<void>(holder->size());
        ADD_FAILURE() << "access without the lock did not raise";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), 11);
        EXPECT_EQ(std::string(error.what()).rfind(text, 0), 0u) << error.what();
    }
    EXPECT_THROW(static_cast<void>(holder.begin()), std::system_error);
}

TEST(ResourceHolders, RaiseOnAccessAfterRelease) {
    ResourceOwner<Numbers> owner;
    ExclusiveResourceHolder<Numbers> writer(owner.Keeper);
    writer->push_back(1);
    writer.Release();
    ExpectNotOwning(writer, "ExclusiveResourceHolder do not owns the resource!");

    ConcurrentResourceHolder<Numbers> reader(owner);
    EXPECT_EQ(reader->size(), 1u);
    reader.Release();
    ExpectNotOwning(reader, "ConcurrentResourceHolder do not owns the resource!");
}

TEST(ResourceHolders, OwnerDestructorWaitsForAReader) {
    auto owner = std::make_unique<ResourceOwner<Numbers>>();
    TestLatch readerIn(2);
    std::atomic<bool> ownerGone{false};
    std::atomic<bool> goneWhileReading{false};
    std::thread reader([&] {
        ConcurrentResourceHolder<Numbers> held(*owner, "test", "reader", 1);
        readerIn.arrive_and_wait();
        // Gives a destructor that does not wait the time to finish.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        goneWhileReading = ownerGone.load();
    });
    readerIn.arrive_and_wait();
    owner.reset();
    ownerGone = true;
    reader.join();
    EXPECT_FALSE(goneWhileReading);
}

// Writers append the next index, readers check that the list never looks torn; with and
// without owner records.
TEST(ResourceHolders, WritersAndReadersOnManyThreads) {
    for (const DebugLocksSettings settings : {DebugLocksSettings{0, 0}, DebugLocksSettings{1, 0}}) {
        ResourceOwner<Numbers> owner;
        owner.Keeper->Lock = std::make_shared<CReadWriteLock>(settings);
        constexpr int kPerWriter = 500;
        std::atomic<bool> torn{false};
        std::vector<std::thread> threads;
        for (int t = 0; t < 3; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < kPerWriter; ++i) {
                    ExclusiveResourceHolder<Numbers> writer(owner.Keeper, "t", "writer", 1);
                    writer->push_back(static_cast<int>(writer->size()));
                }
            });
            threads.emplace_back([&] {
                for (int i = 0; i < kPerWriter; ++i) {
                    ConcurrentResourceHolder<Numbers> reader(owner, "t", "reader", 2);
                    int expected = 0;
                    for (int value : reader) {
                        torn = torn || value != expected++;
                    }
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_FALSE(torn);
        EXPECT_EQ(ConcurrentResourceHolder<Numbers>(owner)->size(), 3u * kPerWriter);
    }
}

}  // namespace
