#pragma once
// The operating system's cryptographic random generator.

#include <cstddef>

namespace platform {

// Fills `data` with `size` random bytes; false when the generator is unavailable.
bool SystemRandom(void* data, std::size_t size);

}  // namespace platform
