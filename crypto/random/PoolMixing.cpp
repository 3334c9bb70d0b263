#include "crypto/random/PoolMixing.h"

#include <array>

#include "Common/Common/Endian.h"
#include "crypto/Hashes.h"
#include "platform/SecureMemory.h"

namespace crypto::random {
namespace {

constexpr std::size_t kStateSize = 20;
constexpr std::size_t kMessageSize = 64;

}  // namespace

void MixPool(std::span<std::uint8_t, kPoolBlockSize> pool) {
    std::array<std::uint8_t, kMessageSize> message;
    std::array<std::uint32_t, kStateSize / 4> state;
    for (std::size_t start = 0; start + kStateSize <= kPoolBlockSize; start += kStateSize) {
        for (std::size_t j = 0; j < kMessageSize; ++j) {
            message[j] = pool[(start + j) % kPoolSize];
        }
        for (std::size_t word = 0; word < state.size(); ++word) {
            state[word] = Zelmarik::LoadLittle<std::uint32_t>(pool.data() + start + 4 * word);
        }
        Sha1Transform(state, message);
        for (std::size_t word = 0; word < state.size(); ++word) {
            Zelmarik::StoreLittle<std::uint32_t>(pool.data() + start + 4 * word, state[word]);
        }
    }
    platform::SecureWipe(message.data(), message.size());
    platform::SecureWipe(state.data(), sizeof(state));
}

}  // namespace crypto::random
