#pragma once
// A read-write lock that can record who holds it, for inspection with a debugger. Recording is
// switched on by the "DebugLocks" setting of the machine or of the user; switched off, the lock
// is a plain shared mutex with one null test per operation.

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>

#include "Common/Common/Singleton.h"

namespace Zelmarik {

struct LockOwnerInfo {
    std::string File;
    std::string Function;
    // "StackTrace:\r\n" and this thread's trace frames, when traces are kept.
    std::string StackTrace;
    std::int32_t Line = -1;
    std::uint32_t ThreadId = 0;
    // 100-nanosecond ticks since 1 January 1970.
    std::uint64_t Time = 0;
};

struct LockDebugData {
    // Guards the owner records; never held while waiting for the lock itself.
    std::mutex Guard;
    LockOwnerInfo ExclusiveOwner;
    std::map<std::uint32_t, LockOwnerInfo> SharedOwners;
};

// The switch as the newest lock read it; every lock constructor overwrites both.
extern std::atomic<std::int32_t> MachineDebugLocks;
extern std::atomic<std::int32_t> UserDebugLocks;

struct DebugLocksSettings {
    std::int32_t Machine = -1;
    std::int32_t User = -1;
};

// Fetched around every debugged lock operation, so that it exists for a debugger and for lock
// order checks to come; this system makes no checks with it.
class CLockOrderGuarder : public singleton_dynamic<CLockOrderGuarder> {
public:
    ~CLockOrderGuarder() override = default;
};

// A lock that may record its owners.
class CDebuggedLock {
public:
    virtual ~CDebuggedLock() = default;
};

// Not recursive: a thread that holds the lock may not take it again.
class CReadWriteLock : public CDebuggedLock, public std::shared_mutex {
public:
    // Reads the machine's and the user's "DebugLocks" setting.
    CReadWriteLock();
    explicit CReadWriteLock(const DebugLocksSettings& settings);
    ~CReadWriteLock() override = default;
    CReadWriteLock(const CReadWriteLock&) = delete;
    CReadWriteLock& operator=(const CReadWriteLock&) = delete;

    // The position of the caller goes into the owner record: file and function when not null,
    // line when not -1.
    void LockExclusive(const char* file = nullptr, const char* function = nullptr, int line = -1);
    void UnlockExclusive();
    // A reader is recorded only when it gives its whole position.
    void LockShared(const char* file = nullptr, const char* function = nullptr, int line = -1);
    void UnlockShared();

    bool DebugEnabled = false;
    // Null unless DebugEnabled.
    std::unique_ptr<LockDebugData> Debug;
};

}  // namespace Zelmarik
