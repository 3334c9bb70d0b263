#include "archive/detail/ChunkCodecPool.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

namespace {

constexpr unsigned kMaxDefaultWorkers = 4;

// How long a thread that runs out of work looks for more before it sleeps: the next batch, or
// the end of the calls under way, mostly comes within microseconds, and waking a thread that
// sleeps costs about as much as inflating a batch on a virtual machine.
constexpr auto kSpinBudget = std::chrono::microseconds(50);

template <typename Condition>
void SpinUntil(Condition condition) {
    const auto until = std::chrono::steady_clock::now() + kSpinBudget;
    while (!condition() && std::chrono::steady_clock::now() < until) {
        std::this_thread::yield();
    }
}

}  // namespace

unsigned CodecWorkers(unsigned asked) {
    if (asked != 0) {
        return std::min(asked, kMaxCodecWorkers);
    }
    return std::clamp(std::thread::hardware_concurrency(), 1u, kMaxDefaultWorkers);
}

ChunkCodecPool::ChunkCodecPool(ChunkCodec::Direction direction, unsigned workers) {
    for (unsigned i = 0; i < std::max(workers, 1u); ++i) {
        codecs_.push_back(std::make_unique<ChunkCodec>(direction));
    }
}

ChunkCodecPool::~ChunkCodecPool() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        ++posted_;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void ChunkCodecPool::StartWorkers() {
    threads_.reserve(codecs_.size() - 1);
    started_ = true;
    for (std::size_t i = 1; i < codecs_.size(); ++i) {
        try {
            threads_.emplace_back(&ChunkCodecPool::WorkerLoop, this, std::ref(*codecs_[i]));
        } catch (const std::system_error&) {
            break;  // fewer threads give the same bytes, only later
        }
    }
}

bool ChunkCodecPool::Ready() const {
    return std::all_of(codecs_.begin(), codecs_.end(),
                       [](const std::unique_ptr<ChunkCodec>& codec) { return codec->Ready(); });
}

void ChunkCodecPool::RunShare(ChunkCodec& codec, std::unique_lock<std::mutex>& lock) {
    while (next_ < count_) {
        // A share shrinks with what is left, so that the lock is taken a few times per batch,
        // not once per chunk, and the last shares still spread over the threads.
        const std::size_t first = next_;
        const std::size_t share = std::max<std::size_t>(1, (count_ - first) / (2 * Threads()));
        next_ += share;
        ++running_;
        const Job& job = *job_;
        std::exception_ptr caught;
        lock.unlock();
        try {
            for (std::size_t index = first; index < first + share; ++index) {
                job(codec, index);
            }
        } catch (...) {
            caught = std::current_exception();
        }
        lock.lock();
        --running_;
        if (caught) {
            if (!failure_) {
                failure_ = caught;
            }
            next_ = count_;
        }
    }
}

void ChunkCodecPool::WorkerLoop(ChunkCodec& codec) {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (!stopping_ && next_ >= count_) {
            const std::uint64_t seen = posted_;
            lock.unlock();
            SpinUntil([&] { return posted_ != seen; });
            lock.lock();
        }
        wake_.wait(lock, [&] { return stopping_ || next_ < count_; });
        if (stopping_) {
            return;
        }
        RunShare(codec, lock);
        if (running_ == 0) {
            done_.notify_one();
        }
    }
}

void ChunkCodecPool::Begin(std::size_t count, const Job& job, bool wake) {
    busy_ = true;
    if (wake && !started_) {
        StartWorkers();
    }
    const std::lock_guard lock(mutex_);
    job_ = &job;
    count_ = count;
    next_ = 0;
    ++posted_;
    if (wake) {
        wake_.notify_all();
    }
}

void ChunkCodecPool::Finish() {
    if (!busy_) {
        return;
    }
    busy_ = false;
    std::unique_lock lock(mutex_);
    RunShare(*codecs_.front(), lock);
    // Only calls under way are waited for: a worker that wakes late finds nothing left, and
    // the caller does not wait for it.
    if (running_ != 0) {
        lock.unlock();
        SpinUntil([&] { return running_ == 0; });
        lock.lock();
    }
    done_.wait(lock, [&] { return running_ == 0; });
    job_ = nullptr;
    count_ = 0;
    next_ = 0;
    if (failure_) {
        std::rethrow_exception(std::exchange(failure_, nullptr));
    }
}

void ChunkCodecPool::ForEach(std::size_t count, const Job& job) {
    // A single chunk is not worth waking anyone for.
    Begin(count, job, count > 1 && codecs_.size() > 1);
    Finish();
}

void ChunkCodecPool::Start(std::size_t count, const Job& job) {
    // The caller has other work meanwhile: even one chunk goes to a thread.
    Begin(count, job, count > 0 && codecs_.size() > 1);
}
