#include "platform/ThreadId.h"

#include <windows.h>

namespace platform {

std::uint32_t CurrentThreadId() {
    return ::GetCurrentThreadId();
}

}  // namespace platform
