#pragma once
// Chunks of one batch run through zlib on several threads at once: the pieces of a data stream
// are independent, so a few workers keep every core busy while the caller keeps the order of
// everything else (reading, the chunk chain, writing, the callbacks).

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ChunkCodec.h"

// Workers for a data stream: `asked`, at most kMaxCodecWorkers; 0 asks for the processor count,
// at least 1 and at most 4.
unsigned CodecWorkers(unsigned asked);

// `workers` zlib streams of one direction, and a thread for each but the first: the caller of
// ForEach is a worker too. The threads start at the first batch of more than one chunk, so that
// a run of small files starts none, and live as long as the pool. Only one thread may use a
// pool.
class ChunkCodecPool {
public:
    using Job = std::function<void(ChunkCodec& codec, std::size_t index)>;

    // At least one worker. Should the system refuse a thread, the pool works with those it has.
    // The streams are set up here, the threads later.
    ChunkCodecPool(ChunkCodec::Direction direction, unsigned workers);
    ~ChunkCodecPool();
    ChunkCodecPool(const ChunkCodecPool&) = delete;
    ChunkCodecPool& operator=(const ChunkCodecPool&) = delete;

    // False when zlib could not set up a stream.
    bool Ready() const;
    // The threads that share a batch, the caller's included: 1 until the threads start.
    std::size_t Threads() const { return threads_.size() + 1; }

    // Calls `job` once for each index below `count`, spread over the workers, and returns when
    // all calls have returned. No two calls at the same time get the same codec. An exception
    // out of a call stops the handing out of indices and is thrown here once the others are done.
    void ForEach(std::size_t count, const Job& job);

    // ForEach in two halves, so that the caller can do other work while the threads run the
    // calls: Start hands the indices to the threads and returns at once; Finish runs what is
    // left on the caller, waits for the calls under way and throws what ForEach would, and
    // returns at once when no Start waits for it. `job` must live until Finish returns, and
    // every Start needs its Finish before the next one.
    void Start(std::size_t count, const Job& job);
    void Finish();
    // Whether a Start waits for its Finish.
    bool Busy() const { return busy_; }

private:
    void Begin(std::size_t count, const Job& job, bool wake);
    void StartWorkers();
    void WorkerLoop(ChunkCodec& codec);
    // Claims indices of the current batch and runs them until none is left.
    void RunShare(ChunkCodec& codec, std::unique_lock<std::mutex>& lock);

    std::vector<std::unique_ptr<ChunkCodec>> codecs_;
    std::vector<std::thread> threads_;
    bool started_ = false;
    bool busy_ = false;

    // All below under mutex_.
    std::mutex mutex_;
    std::condition_variable wake_;  // workers: indices to claim, or the end
    std::condition_variable done_;  // the caller: no call under way
    const Job* job_ = nullptr;
    std::size_t count_ = 0;
    std::size_t next_ = 0;
    // Calls claimed and not yet returned; changed under mutex_, looked at without it too.
    std::atomic<std::size_t> running_ = 0;
    // Counts the batches handed out and the end, so that a thread can look for them unlocked.
    std::atomic<std::uint64_t> posted_ = 0;
    bool stopping_ = false;
    std::exception_ptr failure_;
};
