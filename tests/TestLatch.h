// A single-use count-down latch on a mutex and a condition variable. std::latch waits through
// the library's atomic wait, which loses wake-ups in the MinGW runtime and hangs the test.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

class TestLatch {
public:
    explicit TestLatch(std::size_t count) : count_(count) {}

    void arrive_and_wait() {
        std::unique_lock<std::mutex> hold(mutex_);
        if (count_ > 0 && --count_ == 0) {
            released_.notify_all();
            return;
        }
        released_.wait(hold, [this] { return count_ == 0; });
    }

private:
    std::mutex mutex_;
    std::condition_variable released_;
    std::size_t count_;
};
