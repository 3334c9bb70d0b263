#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include "crypto/RandomPool.h"
#include "crypto/random/ProcessPool.h"

namespace crypto {
namespace {

using namespace std::chrono_literals;

// Sources that notice two polls running at once and count the poll thread's polls.
struct PollWatch {
    std::atomic<int> opened{0};
    std::atomic<bool> polling{false};
    std::atomic<int> overlaps{0};
    std::atomic<int> otherThreadPolls{0};
    std::thread::id testThread;
};
PollWatch watch;

class WatchedSources final : public platform::EntropySources {
public:
    void FastPoll(platform::EntropySink& sink) override { Poll(sink); }
    void SlowPoll(platform::EntropySink& sink) override { Poll(sink); }

private:
    static void Poll(platform::EntropySink& sink) {
        if (watch.polling.exchange(true)) {
            ++watch.overlaps;
        }
        if (std::this_thread::get_id() != watch.testThread) {
            ++watch.otherThreadPolls;
        }
        sink.AddWord(static_cast<std::uint32_t>(
            std::chrono::steady_clock::now().time_since_epoch().count()));
        std::this_thread::sleep_for(1ms);
        watch.polling = false;
    }
};

std::unique_ptr<platform::EntropySources> OpenWatchedSources() {
    ++watch.opened;
    return std::make_unique<WatchedSources>();
}

std::unique_ptr<platform::EntropySources> OpenNothing() {
    return nullptr;
}

bool Untouched(const std::array<std::uint8_t, 64>& buffer) {
    return std::all_of(buffer.begin(), buffer.end(), [](std::uint8_t b) { return b == 0xAA; });
}

// No bytes without a running pool, also after a start that failed; a pool runs once however
// often it is started, and starts again after a stop; two requests differ.
TEST(ProcessPool, GivesBytesOnlyWhileRunning) {
    std::array<std::uint8_t, 64> buffer;
    buffer.fill(0xAA);
    EXPECT_FALSE(RandomGetBytes(buffer.data(), buffer.size(), false));
    random::StartPool(OpenNothing);
    EXPECT_FALSE(RandomGetBytes(buffer.data(), buffer.size(), true));
    EXPECT_TRUE(Untouched(buffer));

    std::array<std::uint8_t, 64> other{};
    for (int run = 0; run < 2; ++run) {
        RandomStart();
        RandomStart();
        ASSERT_TRUE(RandomGetBytes(buffer.data(), buffer.size(), run == 1));
        ASSERT_TRUE(RandomGetBytes(other.data(), other.size(), false));
        EXPECT_NE(buffer, other) << "run " << run;
        RandomStop();
        RandomStop();
        buffer.fill(0xAA);
        EXPECT_FALSE(RandomGetBytes(buffer.data(), buffer.size(), false));
        EXPECT_TRUE(Untouched(buffer));
    }
}

TEST(ProcessPool, PollThreadAndRequestsNeverPollAtOnce) {
    watch.testThread = std::this_thread::get_id();
    const int openedBefore = watch.opened;
    random::StartPool(OpenWatchedSources);
    random::StartPool(OpenWatchedSources);
    EXPECT_EQ(watch.opened, openedBefore + 1) << "a running pool is not started again";

    std::array<std::uint8_t, 32> previous{};
    std::array<std::uint8_t, 32> out{};
    const auto end = std::chrono::steady_clock::now() + 1200ms;
    int requests = 0;
    while (std::chrono::steady_clock::now() < end) {
        ASSERT_TRUE(RandomGetBytes(out.data(), out.size(), requests % 8 == 0));
        EXPECT_NE(out, previous);
        previous = out;
        ++requests;
    }
    RandomStop();
    EXPECT_EQ(watch.overlaps, 0);
    EXPECT_GE(watch.otherThreadPolls, 2) << "the poll thread polls every 250 ms";

    // The stop waited for the poll thread: nothing polls any more.
    const int pollsAtStop = watch.otherThreadPolls;
    std::this_thread::sleep_for(600ms);
    EXPECT_EQ(watch.otherThreadPolls, pollsAtStop);
}

}  // namespace
}  // namespace crypto
