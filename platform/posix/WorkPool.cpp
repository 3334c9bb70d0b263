#include "platform/WorkPool.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace platform {
namespace {

class ConditionEvent final : public WorkEvent {
public:
    // Notifies under the lock: a waiter that wakes may destroy the event at once.
    void Set() override {
        const std::lock_guard<std::mutex> lock(mutex_);
        set_ = true;
        changed_.notify_all();
    }

    WaitOutcome Wait(std::optional<std::chrono::milliseconds> timeout) override {
        std::unique_lock<std::mutex> lock(mutex_);
        const auto isSet = [this] { return set_; };
        if (!timeout) {
            changed_.wait(lock, isSet);
            return WaitOutcome::Signalled;
        }
        return changed_.wait_for(lock, *timeout, isSet) ? WaitOutcome::Signalled
                                                        : WaitOutcome::TimedOut;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool set_ = false;
};

// Set when the pool has gone at process exit; a constant-initialised flag outlives it.
std::atomic<bool> poolClosed{false};

// A few threads, started as work arrives and kept; items may block for seconds, so a new item
// gets a new thread while none is idle, up to the limit. At exit the pool runs what is queued
// and joins its threads, so no item outlives the process's other objects.
class Pool {
public:
    static constexpr std::size_t kMaxThreads = 8;

    ~Pool() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            stopping_ = true;
            poolClosed = true;
        }
        arrived_.notify_all();
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }

    bool Queue(WorkFunction work, void* context) {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (stopping_) {
                return false;
            }
            if (idle_ <= queue_.size() && threads_.size() < kMaxThreads) {
                try {
                    threads_.emplace_back([this] { Run(); });
                } catch (const std::system_error&) {
                    if (threads_.empty()) {
                        return false;
                    }
                }
            }
            queue_.emplace_back(work, context);
        }
        arrived_.notify_one();
        return true;
    }

private:
    void Run() {
        std::unique_lock<std::mutex> lock(mutex_);
        for (;;) {
            ++idle_;
            arrived_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
            --idle_;
            if (queue_.empty()) {
                return;
            }
            const auto [work, context] = queue_.front();
            queue_.pop_front();
            lock.unlock();
            work(context);
            lock.lock();
        }
    }

    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::pair<WorkFunction, void*>> queue_;
    std::vector<std::thread> threads_;
    std::size_t idle_ = 0;
    bool stopping_ = false;
};

}  // namespace

std::unique_ptr<WorkEvent> WorkEvent::Create() {
    return std::make_unique<ConditionEvent>();
}

bool QueueWorkItem(WorkFunction work, void* context) {
    if (work == nullptr || poolClosed) {
        return false;
    }
    static Pool pool;
    return pool.Queue(work, context);
}

}  // namespace platform
