#include <algorithm>

#include "crypto/Hashes.h"
#include "platform/SecureMemory.h"

namespace crypto {

void HmacSha256(std::span<const std::uint8_t> key, std::span<const std::uint8_t> message,
                std::span<std::uint8_t> digest) {
    // A key longer than a block is replaced by its digest; a shorter one is zero-filled.
    std::array<std::uint8_t, kSha256BlockSize> block{};
    Sha256Context context;
    if (key.size() > kSha256BlockSize) {
        Sha256Init(context);
        Sha256Update(context, key);
        Sha256Final(context, std::span(block).first<kSha256DigestSize>());
    } else {
        std::copy(key.begin(), key.end(), block.begin());
    }

    std::array<std::uint8_t, kSha256BlockSize> pad;
    std::array<std::uint8_t, kSha256DigestSize> inner;
    std::ranges::transform(block, pad.begin(), [](std::uint8_t b) { return b ^ 0x36; });
    Sha256Init(context);
    Sha256Update(context, pad);
    Sha256Update(context, message);
    Sha256Final(context, inner);

    std::ranges::transform(block, pad.begin(), [](std::uint8_t b) { return b ^ 0x5C; });
    std::array<std::uint8_t, kSha256DigestSize> outer;
    Sha256Init(context);
    Sha256Update(context, pad);
    Sha256Update(context, inner);
    Sha256Final(context, outer);
    std::copy_n(outer.begin(), std::min(digest.size(), outer.size()), digest.begin());

    platform::SecureWipe(block.data(), block.size());
    platform::SecureWipe(pad.data(), pad.size());
    platform::SecureWipe(inner.data(), inner.size());
    platform::SecureWipe(outer.data(), outer.size());
}

}  // namespace crypto
