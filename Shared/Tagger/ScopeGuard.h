#pragma once
// Runs an action when the scope is left, however it is left, unless dismissed first.

#include <utility>

namespace Zelmarik {

template <typename Action>
class ScopeGuard {
public:
    explicit ScopeGuard(Action action) : action_(std::move(action)) {}
    ~ScopeGuard() {
        if (armed_) {
            action_();
        }
    }
    ScopeGuard(const ScopeGuard&) = delete;
    ScopeGuard& operator=(const ScopeGuard&) = delete;

    void Dismiss() { armed_ = false; }

private:
    Action action_;
    bool armed_ = true;
};

}  // namespace Zelmarik
