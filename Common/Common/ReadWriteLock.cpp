#include "Common/Common/ReadWriteLock.h"

#include <chrono>

#include "Common/Common/Exception.h"
#include "platform/DebugSwitch.h"
#include "platform/ThreadId.h"

namespace Zelmarik {

std::atomic<std::int32_t> MachineDebugLocks{-1};
std::atomic<std::int32_t> UserDebugLocks{-1};

namespace {

void FetchGuarder() {
    static_cast<void>(CLockOrderGuarder::Instance());
}

std::uint64_t TicksSince1970() {
    using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, 10'000'000>>;
    return std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::string StackTraceText() {
    std::string text = "StackTrace:\r\n";
    for (const ScopeTraceNode* frame = ScopeTrace(); frame != nullptr; frame = frame->Next) {
        text += frame->Text;
        if (frame->Next != nullptr) {
            text += "\r\n";
        }
    }
    return text;
}

void FillOwner(LockOwnerInfo& owner, const char* file, const char* function, int line) {
    if (file != nullptr) {
        owner.File = file;
    }
    if (function != nullptr) {
        owner.Function = function;
    }
    if (line != -1) {
        owner.Line = line;
    }
    owner.ThreadId = platform::CurrentThreadId();
    owner.Time = TicksSince1970();
    if (!StackTraceDisabled && ScopeTrace() != nullptr) {
        owner.StackTrace = StackTraceText();
    }
}

}  // namespace

CReadWriteLock::CReadWriteLock()
    : CReadWriteLock(
          DebugLocksSettings{platform::MachineDebugLocks(), platform::UserDebugLocks()}) {}

CReadWriteLock::CReadWriteLock(const DebugLocksSettings& settings) {
    MachineDebugLocks = settings.Machine;
    UserDebugLocks = settings.User;
    DebugEnabled = settings.Machine >= 1 || settings.User >= 1;
    if (DebugEnabled) {
        Debug = std::make_unique<LockDebugData>();
    }
}

void CReadWriteLock::LockExclusive(const char* file, const char* function, int line) {
    if (Debug) {
        FetchGuarder();
    }
    lock();
    if (Debug) {
        FetchGuarder();
        const std::lock_guard<std::mutex> hold(Debug->Guard);
        FillOwner(Debug->ExclusiveOwner, file, function, line);
    }
}

void CReadWriteLock::UnlockExclusive() {
    if (Debug) {
        {
            const std::lock_guard<std::mutex> hold(Debug->Guard);
            Debug->ExclusiveOwner = LockOwnerInfo{};
        }
        FetchGuarder();
    }
    unlock();
}

void CReadWriteLock::LockShared(const char* file, const char* function, int line) {
    if (Debug) {
        FetchGuarder();
    }
    lock_shared();
    if (Debug) {
        FetchGuarder();
        if (file != nullptr && function != nullptr && line != -1) {
            const std::lock_guard<std::mutex> hold(Debug->Guard);
            FillOwner(Debug->SharedOwners[platform::CurrentThreadId()], file, function, line);
        }
    }
}

void CReadWriteLock::UnlockShared() {
    if (Debug) {
        {
            const std::lock_guard<std::mutex> hold(Debug->Guard);
            Debug->SharedOwners.erase(platform::CurrentThreadId());
        }
        FetchGuarder();
    }
    unlock_shared();
}

}  // namespace Zelmarik
