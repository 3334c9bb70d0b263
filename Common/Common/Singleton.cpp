#include "Common/Common/Singleton.h"

#include <mutex>
#include <utility>
#include <vector>

namespace Zelmarik {
namespace {

class SingletonList {
public:
    ~SingletonList() {
        while (!instances_.empty()) {
            instances_.pop_back();
        }
    }

    singleton_dynamic_base* Add(std::unique_ptr<singleton_dynamic_base> instance) {
        const std::lock_guard<std::mutex> hold(guard_);
        instances_.push_back(std::move(instance));
        return instances_.back().get();
    }

private:
    std::mutex guard_;
    std::vector<std::unique_ptr<singleton_dynamic_base>> instances_;
};

}  // namespace

singleton_dynamic_base* singleton_dynamic_base::Register(
    std::unique_ptr<singleton_dynamic_base> instance) {
    static SingletonList list;
    return list.Add(std::move(instance));
}

}  // namespace Zelmarik
