#pragma once
// A shared resource tied to its read-write lock: the resource can only be reached through a
// holder that has the lock. A holder keeps the resource alive by its own reference, so the
// resource cannot vanish while it is held.

#include <memory>
#include <system_error>
#include <utility>

#include "Common/Common/ReadWriteLock.h"

namespace Concurrent {

using Zelmarik::CReadWriteLock;

// The error value of a holder used without its lock.
inline constexpr int kHolderNotOwning = 11;

// The resource with its lock, built with an empty resource and a new lock.
template <class T>
class ResourceKeeper {
public:
    ResourceKeeper() : Resource(std::make_shared<T>()), Lock(std::make_shared<CReadWriteLock>()) {}
    virtual ~ResourceKeeper() = default;

    std::shared_ptr<T> Resource;
    std::shared_ptr<CReadWriteLock> Lock;
};

template <class T>
class ExclusiveResourceHolder;

// The owning handle of a resource.
template <class T>
class ResourceOwner {
public:
    ResourceOwner() : Keeper(std::make_shared<ResourceKeeper<T>>()) {}
    // Shares a keeper that exists already.
    explicit ResourceOwner(std::shared_ptr<ResourceKeeper<T>> keeper) : Keeper(std::move(keeper)) {}
    // Waits until no other holder is open on the resource, then lets go of it.
    virtual ~ResourceOwner() {
        if (Keeper) {
            ExclusiveResourceHolder<T> last(Keeper);
        }
    }
    ResourceOwner(const ResourceOwner&) = delete;
    ResourceOwner& operator=(const ResourceOwner&) = delete;

    std::shared_ptr<ResourceKeeper<T>> Keeper;
};

// What holders share: the keeper, the lock while it is held, and the checked access.
template <class T, class Access>
class ResourceHolderBase {
public:
    Access* operator->() const { return &operator*(); }
    Access& operator*() const {
        if (HeldLock == nullptr) {
            throw std::system_error(std::error_code(kHolderNotOwning, std::generic_category()),
                                    NotOwningText());
        }
        return *Keeper->Resource;
    }
    auto begin() const { return operator*().begin(); }
    auto end() const { return operator*().end(); }

    std::shared_ptr<ResourceKeeper<T>> Keeper;
    // Null once released.
    CReadWriteLock* HeldLock = nullptr;

protected:
    explicit ResourceHolderBase(std::shared_ptr<ResourceKeeper<T>> keeper)
        : Keeper(std::move(keeper)) {}
    virtual ~ResourceHolderBase() = default;
    ResourceHolderBase(const ResourceHolderBase&) = delete;
    ResourceHolderBase& operator=(const ResourceHolderBase&) = delete;

    virtual const char* NotOwningText() const = 0;
};

// A scoped writer: blocks until the lock is taken for writing.
template <class T>
class ExclusiveResourceHolder : public ResourceHolderBase<T, T> {
public:
    explicit ExclusiveResourceHolder(std::shared_ptr<ResourceKeeper<T>> keeper,
                                     const char* file = nullptr, const char* function = nullptr,
                                     int line = -1)
        : ResourceHolderBase<T, T>(std::move(keeper)) {
        this->Keeper->Lock->LockExclusive(file, function, line);
        this->HeldLock = this->Keeper->Lock.get();
    }
    // Releases the lock, then the keeper.
    ~ExclusiveResourceHolder() override {
        Release();
        this->Keeper.reset();
    }

    // Lets go of the lock early; access raises from now on.
    void Release() {
        if (this->HeldLock != nullptr) {
            this->HeldLock->UnlockExclusive();
            this->HeldLock = nullptr;
        }
    }

protected:
    const char* NotOwningText() const override {
        return "ExclusiveResourceHolder do not owns the resource!";
    }
};

// A scoped reader: blocks until the lock is taken for reading. Gives the resource as const.
template <class T>
class ConcurrentResourceHolder : public ResourceHolderBase<T, const T> {
public:
    explicit ConcurrentResourceHolder(std::shared_ptr<ResourceKeeper<T>> keeper,
                                      const char* file = nullptr, const char* function = nullptr,
                                      int line = -1)
        : ResourceHolderBase<T, const T>(std::move(keeper)) {
        this->Keeper->Lock->LockShared(file, function, line);
        this->HeldLock = this->Keeper->Lock.get();
    }
    explicit ConcurrentResourceHolder(const ResourceOwner<T>& owner, const char* file = nullptr,
                                      const char* function = nullptr, int line = -1)
        : ConcurrentResourceHolder(owner.Keeper, file, function, line) {}
    // Releases the lock, then the keeper.
    ~ConcurrentResourceHolder() override {
        Release();
        this->Keeper.reset();
    }

    // Lets go of the lock early; access raises from now on.
    void Release() {
        if (this->HeldLock != nullptr) {
            this->HeldLock->UnlockShared();
            this->HeldLock = nullptr;
        }
    }

protected:
    const char* NotOwningText() const override {
        return "ConcurrentResourceHolder do not owns the resource!";
    }
};

}  // namespace Concurrent
