#include "crypto/random/PoolMixing.h"

#include <array>

#include "Common/Common/Endian.h"
#include "crypto/Hashes.h"
#include "platform/SecureMemory.h"

namespace crypto::random {
namespace {

constexpr std::size_t kStateSize = 20;
constexpr std::size_t kMessageSize = 64;
constexpr std::size_t kLastWindow = kPoolBlockSize - kStateSize;

using State = std::array<std::uint32_t, kStateSize / 4>;
using Message = std::array<std::uint8_t, kMessageSize>;

void LoadState(std::span<const std::uint8_t, kPoolBlockSize> pool, std::size_t start,
               State& state) {
    for (std::size_t word = 0; word < state.size(); ++word) {
        state[word] = Zelmarik::LoadLittle<std::uint32_t>(pool.data() + start + 4 * word);
    }
}

void StoreState(std::span<std::uint8_t, kPoolBlockSize> pool, std::size_t start,
                const State& state) {
    for (std::size_t word = 0; word < state.size(); ++word) {
        Zelmarik::StoreLittle<std::uint32_t>(pool.data() + start + 4 * word, state[word]);
    }
}

// The window's message: the pool bytes themselves, or a copy where they wrap at 512.
std::span<const std::uint8_t, kMessageSize> MessageOf(
    std::span<const std::uint8_t, kPoolBlockSize> pool, std::size_t start, Message& wrapped) {
    if (start + kMessageSize <= kPoolSize) {
        return std::span<const std::uint8_t, kMessageSize>(pool.data() + start, kMessageSize);
    }
    for (std::size_t j = 0; j < kMessageSize; ++j) {
        wrapped[j] = pool[(start + j) % kPoolSize];
    }
    return wrapped;
}

}  // namespace

void MixPool(std::span<std::uint8_t, kPoolBlockSize> pool) {
    // Windows go in pairs: the second of a pair reads nothing the first writes (the first writes
    // below the second's start, and the wrapped windows read only what earlier pairs wrote), so
    // both compressions may run at once and give what one after the other would.
    static_assert(kLastWindow % (2 * kStateSize) == kStateSize, "the windows pair up evenly");
    Message firstWrapped;
    Message secondWrapped;
    State first;
    State second;
    for (std::size_t start = 0; start < kLastWindow; start += 2 * kStateSize) {
        const std::size_t next = start + kStateSize;
        LoadState(pool, start, first);
        LoadState(pool, next, second);
        Sha1TransformPair(first, MessageOf(pool, start, firstWrapped), second,
                          MessageOf(pool, next, secondWrapped));
        StoreState(pool, start, first);
        StoreState(pool, next, second);
    }
    platform::SecureWipe(firstWrapped.data(), firstWrapped.size());
    platform::SecureWipe(secondWrapped.data(), secondWrapped.size());
    platform::SecureWipe(first.data(), sizeof(first));
    platform::SecureWipe(second.data(), sizeof(second));
}

}  // namespace crypto::random
