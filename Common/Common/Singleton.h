#pragma once
// Process-wide singletons made at first use. Each instance is handed to the process's list of
// singletons, which destroys them, newest first, when the process exits.

#include <memory>

namespace Zelmarik {

class singleton_dynamic_base {
public:
    virtual ~singleton_dynamic_base() = default;

protected:
    // Keeps `instance` until exit and gives it back.
    static singleton_dynamic_base* Register(std::unique_ptr<singleton_dynamic_base> instance);
};

template <class T>
class singleton_dynamic : public singleton_dynamic_base {
public:
    static T& Instance() {
        static T* const instance =
            static_cast<T*>(Register(std::unique_ptr<singleton_dynamic_base>(new T)));
        return *instance;
    }
};

}  // namespace Zelmarik
