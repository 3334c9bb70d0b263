#pragma once
// An owning pointer that may be null and copies its object deeply, so that the classes holding
// one keep their default copy and move.

#include <memory>

namespace Zelmarik {

template <typename T>
class CopyingPtr {
public:
    CopyingPtr() = default;
    CopyingPtr(const CopyingPtr& other) : object_(Clone(other)) {}
    CopyingPtr& operator=(const CopyingPtr& other) {
        object_ = Clone(other);
        return *this;
    }
    CopyingPtr(CopyingPtr&&) noexcept = default;
    CopyingPtr& operator=(CopyingPtr&&) noexcept = default;

    T* get() const { return object_.get(); }
    T& operator*() const { return *object_; }
    T* operator->() const { return object_.get(); }
    explicit operator bool() const { return object_ != nullptr; }

    // The object, created with its defaults when there is none.
    T& GetOrCreate() {
        if (!object_) {
            object_ = std::make_unique<T>();
        }
        return *object_;
    }
    void reset() { object_.reset(); }

private:
    static std::unique_ptr<T> Clone(const CopyingPtr& other) {
        return other.object_ ? std::make_unique<T>(*other.object_) : nullptr;
    }

    std::unique_ptr<T> object_;
};

}  // namespace Zelmarik
