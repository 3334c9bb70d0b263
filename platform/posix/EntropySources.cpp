#include "platform/EntropySources.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <new>

#include "platform/SecureMemory.h"
#include "platform/SystemRandom.h"

namespace platform {
namespace {

constexpr std::size_t kSystemRandomSize = 512;
constexpr int kSlowPollSystemRandomRounds = 100;

// The process's command line is added once per process, as start-up information.
bool startupInfoDone = false;

void AddClock(EntropySink& sink, clockid_t clock) {
    timespec now{};
    if (::clock_gettime(clock, &now) == 0) {
        sink.AddObject(&now, sizeof(now));
    }
}

void AddUsage(EntropySink& sink, int who) {
    rusage usage{};
    if (::getrusage(who, &usage) == 0) {
        sink.AddObject(&usage, sizeof(usage));
    }
}

// Adds a file's whole content, read through a fixed buffer.
void AddFile(EntropySink& sink, const char* path) {
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return;
    }
    std::uint8_t buffer[1024];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof(buffer));
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            break;
        }
        sink.Add({buffer, static_cast<std::size_t>(n)});
    }
    ::close(fd);
}

std::uint32_t MillisecondTicks() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint32_t>(now.tv_sec * 1000 + now.tv_nsec / 1000000);
}

void AddSystemRandom(EntropySink& sink) {
    std::uint8_t buffer[kSystemRandomSize];
    if (SystemRandom(buffer, sizeof(buffer))) {
        sink.Add(buffer);
    }
    SecureWipe(buffer, sizeof(buffer));
}

class PosixEntropySources final : public EntropySources {
public:
    void FastPoll(EntropySink& sink) override {
        // Process and session identities and the millisecond clock.
        sink.AddWord(static_cast<std::uint32_t>(::getpid()));
        sink.AddWord(static_cast<std::uint32_t>(::getppid()));
        sink.AddWord(static_cast<std::uint32_t>(::gettid()));
        sink.AddWord(static_cast<std::uint32_t>(::getpgrp()));
        sink.AddWord(static_cast<std::uint32_t>(::getsid(0)));
        sink.AddWord(MillisecondTicks());
        // Memory and load of the machine.
        struct sysinfo memory {};
        if (::sysinfo(&memory) == 0) {
            sink.AddObject(&memory, sizeof(memory));
        }
        // Times of the thread, then of the process.
        AddClock(sink, CLOCK_THREAD_CPUTIME_ID);
        AddUsage(sink, RUSAGE_THREAD);
        AddClock(sink, CLOCK_PROCESS_CPUTIME_ID);
        AddUsage(sink, RUSAGE_SELF);
        // Sizes, faults and times of the process as the kernel counts them.
        AddFile(sink, "/proc/self/stat");
        if (!startupInfoDone) {
            startupInfoDone = true;
            AddFile(sink, "/proc/self/cmdline");
        }
        // The high-resolution counter.
        AddClock(sink, CLOCK_MONOTONIC);
        AddSystemRandom(sink);
    }

    void SlowPoll(EntropySink& sink) override {
        AddFile(sink, "/proc/net/dev");
        AddFile(sink, "/proc/diskstats");
        for (int round = 0; round < kSlowPollSystemRandomRounds; ++round) {
            AddSystemRandom(sink);
        }
    }
};

}  // namespace

std::unique_ptr<EntropySources> OpenEntropySources() {
    return std::unique_ptr<EntropySources>(new (std::nothrow) PosixEntropySources);
}

bool InstallInputHooks(KeyEventHandler, MouseEventHandler) {
    return true;
}

void RemoveInputHooks() {}

}  // namespace platform
