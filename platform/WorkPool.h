#pragma once
// Work items on a thread pool, and the manual-reset events that tell when one is done. Windows
// runs the items on the system's pool; elsewhere a small pool of the process's own runs them.

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

namespace platform {

enum class WaitOutcome { Signalled, TimedOut, Failed };

// A manual-reset event: once set, every wait on it returns at once.
class WorkEvent {
public:
    // A new event, not set; null when the system could not make one.
    static std::unique_ptr<WorkEvent> Create();
    virtual ~WorkEvent() = default;

    virtual void Set() = 0;
    // Without a timeout the wait has no end.
    virtual WaitOutcome Wait(std::optional<std::chrono::milliseconds> timeout) = 0;
};

using WorkFunction = std::uint32_t (*)(void* context);

// Hands `work(context)` to the pool for a call that may block for a long time; false when the
// item could not be queued, for instance while the process is shutting down.
bool QueueWorkItem(WorkFunction work, void* context);

}  // namespace platform
