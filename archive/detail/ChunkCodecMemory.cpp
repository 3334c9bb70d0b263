#include "archive/detail/ChunkCodecMemory.h"

#include <cstdlib>
#include <cstring>
#include <limits>

#include "platform/SecureMemory.h"

namespace {

// The size in front of each block, padded so that the block keeps malloc's alignment.
constexpr std::size_t kHeader = alignof(std::max_align_t);
static_assert(kHeader >= sizeof(std::size_t));

}  // namespace

void* AllocateWiped(std::size_t size) {
    if (size > std::numeric_limits<std::size_t>::max() - kHeader) {
        return nullptr;
    }
    auto* const start = static_cast<unsigned char*>(std::malloc(kHeader + size));
    if (start == nullptr) {
        return nullptr;
    }
    std::memcpy(start, &size, sizeof(size));
    return start + kHeader;
}

void FreeWiped(void* block) {
    if (block == nullptr) {
        return;
    }
    unsigned char* const start = static_cast<unsigned char*>(block) - kHeader;
    std::size_t size = 0;
    std::memcpy(&size, start, sizeof(size));
    platform::SecureWipe(block, size);
    std::free(start);
}
