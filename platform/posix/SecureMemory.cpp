#include "platform/SecureMemory.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstring>

namespace platform {

void SecureWipe(void* data, std::size_t size) {
    if (data != nullptr && size != 0) {
        ::explicit_bzero(data, size);
    }
}

bool LockMemory(void* data, std::size_t size) {
    return data != nullptr && size != 0 && ::mlock(data, size) == 0;
}

void UnlockMemory(void* data, std::size_t size) {
    if (data != nullptr && size != 0) {
        ::munlock(data, size);
    }
}

}  // namespace platform
