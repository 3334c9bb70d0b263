#pragma once
// A recursive lock that counts the holds in force, and its scoped companion.

#include <cstdint>
#include <mutex>

class CCriticalSectionWrapper {
public:
    CCriticalSectionWrapper() = default;
    virtual ~CCriticalSectionWrapper() = default;
    CCriticalSectionWrapper(const CCriticalSectionWrapper&) = delete;
    CCriticalSectionWrapper& operator=(const CCriticalSectionWrapper&) = delete;

    void Enter() {
        section_.lock();
        ++LockCount;
    }
    void Leave() {
        --LockCount;
        section_.unlock();
    }

    // Holds in force; read only by the thread that holds the lock.
    std::uint32_t LockCount = 0;

private:
    std::recursive_mutex section_;
};

class CCriticalSectionLock {
public:
    explicit CCriticalSectionLock(CCriticalSectionWrapper& wrapper) : wrapper_(&wrapper) {
        wrapper_->Enter();
        locked_ = true;
    }
    ~CCriticalSectionLock() {
        if (locked_) {
            wrapper_->Leave();
        }
    }
    CCriticalSectionLock(const CCriticalSectionLock&) = delete;
    CCriticalSectionLock& operator=(const CCriticalSectionLock&) = delete;

private:
    CCriticalSectionWrapper* wrapper_;
    bool locked_ = false;
};
