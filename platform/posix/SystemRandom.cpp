#include "platform/SystemRandom.h"

#include <sys/random.h>

#include <cerrno>

namespace platform {

bool SystemRandom(void* data, std::size_t size) {
    auto* out = static_cast<unsigned char*>(data);
    while (size > 0) {
        const ssize_t n = ::getrandom(out, size, 0);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        out += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace platform
