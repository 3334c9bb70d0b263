#include <algorithm>

#include "Common/Common/Endian.h"
#include "Common/Common/SecureBuffer.h"
#include "crypto/Hashes.h"
#include "platform/SecureMemory.h"

namespace crypto {

int DeriveKey(PseudoRandomFunction prf, std::size_t hashLength,
              std::span<const std::uint8_t> password, std::span<const std::uint8_t> salt,
              std::uint32_t iterations, std::span<std::uint8_t> derived) {
    if (hashLength == 0 || hashLength > kMaxPrfHashLength || iterations < 1) {
        return 1;
    }
    // The first message is the salt followed by the big-endian block index.
    Zelmarik::SecureVector<std::uint8_t> message(salt.begin(), salt.end());
    message.resize(salt.size() + 4);
    // U of the previous and of the current iteration, and their running XOR.
    std::array<std::uint8_t, kMaxPrfHashLength> previous;
    std::array<std::uint8_t, kMaxPrfHashLength> current;
    std::array<std::uint8_t, kMaxPrfHashLength> t;

    std::uint32_t blockIndex = 1;
    for (std::size_t offset = 0; offset < derived.size(); offset += hashLength, ++blockIndex) {
        Zelmarik::StoreBig(message.data() + salt.size(), blockIndex);
        prf(password, message, std::span(current).first(hashLength));
        t = current;
        for (std::uint32_t i = 1; i < iterations; ++i) {
            previous = current;
            prf(password, std::span(previous).first(hashLength),
                std::span(current).first(hashLength));
            for (std::size_t j = 0; j < hashLength; ++j) {
                t[j] ^= current[j];
            }
        }
        const std::size_t take = std::min(hashLength, derived.size() - offset);
        std::copy_n(t.begin(), take, derived.begin() + offset);
    }
    platform::SecureWipe(previous.data(), previous.size());
    platform::SecureWipe(current.data(), current.size());
    platform::SecureWipe(t.data(), t.size());
    return 0;
}

}  // namespace crypto
