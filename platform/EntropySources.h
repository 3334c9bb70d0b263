#pragma once
// What the system can tell the random pool: process, window and machine state, network and disk
// counters, its own random generator, and the input events of the thread that runs the pool.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace platform {

// Receives what a poll reads, in the order it reads it.
class EntropySink {
public:
    virtual void Add(std::span<const std::uint8_t> bytes) = 0;

    // Four bytes, least significant first.
    void AddWord(std::uint32_t value) {
        const std::uint8_t bytes[4] = {
            static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value >> 16), static_cast<std::uint8_t>(value >> 24)};
        Add(bytes);
    }

    void AddObject(const void* object, std::size_t size) {
        Add({static_cast<const std::uint8_t*>(object), size});
    }

protected:
    ~EntropySink() = default;
};

// The pool's sources. A failing system call only leaves its bytes out.
class EntropySources {
public:
    virtual ~EntropySources() = default;
    // Cheap state read on every request and by the poll thread.
    virtual void FastPoll(EntropySink& sink) = 0;
    // Expensive counters and a large amount of system random.
    virtual void SlowPoll(EntropySink& sink) = 0;
};

// The system's sources; acquires the system generator, and releases what it loaded when
// destroyed. Null only without memory.
std::unique_ptr<EntropySources> OpenEntropySources();

// A mouse event as the hook sees it; handles and extra data cut to their low 32 bits.
struct MouseEvent {
    std::int32_t x;
    std::int32_t y;
    std::uint32_t window;
    std::uint32_t hitTestCode;
    std::uint32_t extraInfo;
};

// Called on the thread that installed the hooks; `ticks` is the system's millisecond counter.
using KeyEventHandler = void (*)(std::uint32_t keyData, std::uint32_t ticks);
using MouseEventHandler = void (*)(const MouseEvent& event, std::uint32_t ticks);

// Installs the keyboard hook, then the mouse hook, for the calling thread. False only when the
// mouse hook could not be installed. Where the system has no input hooks, nothing is installed
// and the result is true.
bool InstallInputHooks(KeyEventHandler onKey, MouseEventHandler onMouse);
// Removes whichever hooks are installed.
void RemoveInputHooks();

}  // namespace platform
