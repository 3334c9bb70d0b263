#include "platform/SecureMemory.h"

#include <windows.h>

namespace platform {

void SecureWipe(void* data, std::size_t size) {
    if (data != nullptr && size != 0) {
        ::SecureZeroMemory(data, size);
    }
}

bool LockMemory(void* data, std::size_t size) {
    return data != nullptr && size != 0 && ::VirtualLock(data, size) != 0;
}

void UnlockMemory(void* data, std::size_t size) {
    if (data != nullptr && size != 0) {
        ::VirtualUnlock(data, size);
    }
}

}  // namespace platform
