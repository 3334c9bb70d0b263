// The pool that runs a batch of chunks on several threads: every index once, no codec shared by
// two calls at a time, and an exception out of a call that leaves the pool usable.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "archive/detail/ChunkCodecPool.h"

namespace {

TEST(ChunkCodecPoolTest, EachIndexRunsOnceAndNoCodecServesTwoCallsAtATime) {
    for (const unsigned workers : {1u, 2u, 3u}) {
        SCOPED_TRACE(workers);
        ChunkCodecPool pool(ChunkCodec::Direction::Deflate, workers);
        ASSERT_TRUE(pool.Ready());
        std::mutex mutex;
        std::map<const ChunkCodec*, std::unique_ptr<std::atomic<bool>>> inUse;
        std::atomic<bool> shared{false};  // set by a call whose codec another call held
        const std::vector<std::uint8_t> input(2048, 'a');
        for (const std::size_t count : {0u, 1u, 2u, 3u, 64u, 500u}) {
            std::vector<std::atomic<int>> calls(count);
            pool.ForEach(count, [&](ChunkCodec& codec, std::size_t index) {
                std::atomic<bool>* busy = nullptr;
                {
                    const std::lock_guard lock(mutex);
                    auto& slot = inUse[&codec];
                    if (!slot) {
                        slot = std::make_unique<std::atomic<bool>>(false);
                    }
                    busy = slot.get();
                }
                if (busy->exchange(true)) {
                    shared = true;
                }
                // Real work while the codec is held, so that two holders would overlap.
                std::array<std::uint8_t, 4096> out{};
                std::size_t produced = 0;
                if (codec.Run(input, out, produced)) {
                    calls[index]++;
                }
                busy->store(false);
            });
            for (std::size_t i = 0; i < count; ++i) {
                EXPECT_EQ(calls[i], 1) << "index " << i << " of " << count;
            }
        }
        EXPECT_FALSE(shared);
        EXPECT_EQ(pool.Threads(), workers);
        EXPECT_LE(inUse.size(), workers);
    }
}

TEST(ChunkCodecPoolTest, ExceptionComesBackToTheCallerAndThePoolGoesOn) {
    ChunkCodecPool pool(ChunkCodec::Direction::Inflate, 3);
    EXPECT_THROW(pool.ForEach(100,
                              [](ChunkCodec&, std::size_t index) {
                                  if (index == 37) {
                                      throw std::runtime_error("chunk 37");
                                  }
                              }),
                 std::runtime_error);
    std::atomic<std::size_t> calls{0};
    pool.ForEach(100, [&](ChunkCodec&, std::size_t) { calls++; });
    EXPECT_EQ(calls, 100u);
}

}  // namespace
