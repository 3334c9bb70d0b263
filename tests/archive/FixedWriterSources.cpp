// The writer's random pool and clock, replaced in the known-answer program so that an archive
// comes out the same every time. Linked ahead of the libraries, these definitions keep the real
// pool and clock out of that program; every other program keeps them.
#include <cstdint>

#include "crypto/RandomPool.h"
#include "platform/LocalTime.h"

namespace {

std::uint32_t state = 0;
bool running = false;

}  // namespace

namespace crypto {

// Each run starts the same stream, so that an image does not depend on the ones made before it.
void RandomStart() {
    state = 0x2545F491;
    running = true;
}

void RandomStop() {
    running = false;
}

bool RandomGetBytes(std::uint8_t* buffer, std::uint32_t count, bool) {
    if (!running) {
        return false;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        state ^= state << 13;  // xorshift32
        state ^= state >> 17;
        state ^= state << 5;
        buffer[i] = static_cast<std::uint8_t>(state >> 24);
    }
    return true;
}

}  // namespace crypto

namespace platform {

LocalDateTime CurrentLocalTime() {
    return {2021, 3, 14, 15, 9, 26};
}

}  // namespace platform
