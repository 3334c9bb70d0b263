#pragma once
// The random pool's bytes and the function that stirs them.

#include <cstddef>
#include <cstdint>
#include <span>

namespace crypto::random {

inline constexpr std::size_t kPoolSize = 512;
// The last mixing step chains through 20 bytes from offset 500, 8 beyond the pool.
inline constexpr std::size_t kPoolBlockSize = kPoolSize + 8;

// Stirs the pool with the SHA-1 compression: for every 20-byte window from offset 0 to 500, the
// window (five little-endian words) is the chaining state and the 64 pool bytes from its start,
// wrapping at 512, are the message.
void MixPool(std::span<std::uint8_t, kPoolBlockSize> pool);

}  // namespace crypto::random
