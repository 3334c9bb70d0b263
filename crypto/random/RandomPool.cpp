#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <optional>
#include <system_error>
#include <thread>

#include "crypto/RandomPool.h"
#include "crypto/random/InputFilters.h"
#include "crypto/random/PoolState.h"
#include "crypto/random/ProcessPool.h"

namespace crypto {
namespace {

using random::PoolState;

constexpr auto kPollInterval = std::chrono::milliseconds(250);

std::atomic<random::SourcesFactory> startSources{platform::OpenEntropySources};

// Everything but the filters and the carried positions lives from start to stop. The lock is
// recursive like a critical section: a hook called on the writing thread while that thread holds
// the lock must not deadlock.
struct ProcessPool {
    std::atomic<std::uint32_t> poolStarted{0};
    std::recursive_mutex* poolLock = nullptr;
    std::unique_ptr<PoolState> pool;
    std::unique_ptr<platform::EntropySources> sources;
    std::uint32_t stopRequest = 0;
    // Wakes the poll thread for a stop, so that a stop takes no poll interval.
    std::condition_variable_any stopRequested;
    std::thread pollThread;
    random::CarriedPoolState carried;
    random::MouseEventFilter mouseFilter;
    random::KeyEventFilter keyFilter;
};

// Never destroyed: a process may end with the pool running.
ProcessPool& Process() {
    static ProcessPool* const process = new ProcessPool;
    return *process;
}

void AddEventWords(const std::optional<random::EventWords>& words) {
    if (!words) {
        return;
    }
    ProcessPool& process = Process();
    std::lock_guard guard(*process.poolLock);
    process.pool->AddWord((*words)[0]);
    process.pool->AddWord((*words)[1]);
}

void OnKeyEvent(std::uint32_t keyData, std::uint32_t ticks) {
    AddEventWords(Process().keyFilter.Filter(keyData, ticks));
}

void OnMouseEvent(const platform::MouseEvent& event, std::uint32_t ticks) {
    AddEventWords(Process().mouseFilter.Filter(event, ticks));
}

void PollLoop(ProcessPool& process) {
    std::unique_lock lock(*process.poolLock);
    for (;;) {
        if (process.stopRequest == 1) {
            process.stopRequest = 0;
            return;
        }
        process.pool->FastPoll(*process.sources);
        process.stopRequested.wait_for(lock, kPollInterval,
                                       [&process] { return process.stopRequest == 1; });
    }
}

}  // namespace

namespace random {

void StartPool(SourcesFactory openSources) {
    ProcessPool& process = Process();
    if (process.poolStarted != 0) {
        return;
    }
    process.poolLock = new (std::nothrow) std::recursive_mutex;
    if (process.poolLock == nullptr) {
        return;
    }
    process.poolStarted = 1;
    process.pool.reset(new (std::nothrow) PoolState(process.carried));
    if (process.pool == nullptr || !platform::InstallInputHooks(OnKeyEvent, OnMouseEvent)) {
        RandomStop();
        return;
    }
    process.sources = openSources();
    if (process.sources == nullptr) {
        RandomStop();
        return;
    }
    try {
        process.pollThread = std::thread(PollLoop, std::ref(process));
    } catch (const std::system_error&) {
        RandomStop();
    }
}

void SetStartSources(SourcesFactory openSources) {
    startSources.store(openSources != nullptr ? openSources : platform::OpenEntropySources);
}

}  // namespace random

void RandomStart() {
    random::StartPool(startSources.load());
}

void RandomStop() {
    ProcessPool& process = Process();
    if (process.poolStarted == 0) {
        return;
    }
    {
        std::lock_guard guard(*process.poolLock);
        platform::RemoveInputHooks();
        process.stopRequest = 1;
    }
    process.stopRequested.notify_all();
    // Only a started poll thread answers the request; it ends when it has.
    if (process.pollThread.joinable()) {
        process.pollThread.join();
    }
    process.pool.reset();
    process.sources.reset();
    process.stopRequest = 0;
    delete process.poolLock;
    process.poolLock = nullptr;
    process.poolStarted = 0;
}

bool RandomGetBytes(std::uint8_t* buffer, std::uint32_t count, bool forceSlowPoll) {
    ProcessPool& process = Process();
    if (process.poolStarted == 0 || (buffer == nullptr && count != 0)) {
        return false;
    }
    std::lock_guard guard(*process.poolLock);
    process.pool->GetBytes(*process.sources, buffer, count, forceSlowPoll);
    return true;
}

}  // namespace crypto
