#include "platform/ThreadId.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

std::uint32_t CurrentThreadId() {
    return static_cast<std::uint32_t>(::syscall(SYS_gettid));
}

}  // namespace platform
