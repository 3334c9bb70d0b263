// Region encryption: cipher block chaining from the IV, with the whitening XORed onto what is
// stored after the chain value has been taken.

#include <algorithm>
#include <ranges>

#include "crypto/CipherSuite.h"
#include "crypto/detail/ResolvedSuite.h"
#include "platform/SecureMemory.h"

namespace crypto {
namespace {

using detail::ResolvedCipher;
using detail::ResolvedSuite;

// Chain value and whitening of one pass; wiped when the pass ends.
struct PassState {
    std::uint8_t chain[kMaxBlockSize];
    std::uint8_t whitening[kMaxBlockSize];
    std::uint8_t saved[kMaxBlockSize];

    PassState(std::span<const std::uint8_t> iv, std::span<const std::uint8_t> white,
              std::size_t blockSize) {
        std::copy_n(iv.begin(), blockSize, chain);
        for (std::size_t i = 0; i < blockSize; ++i) {
            whitening[i] = white[i % kWhiteningSize];
        }
    }
    ~PassState() { platform::SecureWipe(this, sizeof(*this)); }
    PassState(const PassState&) = delete;
    PassState& operator=(const PassState&) = delete;
};

void XorInto(std::uint8_t* target, const std::uint8_t* source, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
        target[i] ^= source[i];
    }
}

void EncryptPass(std::span<std::uint8_t> buffer, std::span<const ResolvedCipher> list,
                 std::span<const std::uint8_t> iv, std::span<const std::uint8_t> whitening) {
    const std::size_t blockSize = list.front().blockSize;
    PassState state(iv, whitening, blockSize);
    for (std::size_t offset = 0; offset + blockSize <= buffer.size(); offset += blockSize) {
        std::uint8_t* block = buffer.data() + offset;
        XorInto(block, state.chain, blockSize);
        for (const ResolvedCipher& cipher : list) {
            cipher.ops->encrypt(cipher.schedule, block, 1);
        }
        std::copy_n(block, blockSize, state.chain);
        XorInto(block, state.whitening, blockSize);
    }
}

void DecryptPass(std::span<std::uint8_t> buffer, std::span<const ResolvedCipher> list,
                 std::span<const std::uint8_t> iv, std::span<const std::uint8_t> whitening) {
    const std::size_t blockSize = list.front().blockSize;
    PassState state(iv, whitening, blockSize);
    for (std::size_t offset = 0; offset + blockSize <= buffer.size(); offset += blockSize) {
        std::uint8_t* block = buffer.data() + offset;
        XorInto(block, state.whitening, blockSize);
        std::copy_n(block, blockSize, state.saved);
        // Reverse iterators, not std::views::reverse, which clang 14 cannot build with
        // libstdc++ 12.
        for (auto cipher = list.rbegin(); cipher != list.rend(); ++cipher) {
            cipher->ops->decrypt(cipher->schedule, block, 1);
        }
        XorInto(block, state.chain, blockSize);
        std::copy_n(state.saved, blockSize, state.chain);
    }
}

// The suite resolved and the arguments checked; empty when the region cannot be transformed.
std::optional<ResolvedSuite> Prepare(std::span<const std::uint8_t> schedule,
                                     std::span<const std::uint8_t> iv,
                                     std::span<const std::uint8_t> whitening, std::uint32_t suite) {
    auto resolved = detail::ResolveSuite(suite, schedule);
    if (!resolved || whitening.size() < kWhiteningSize) {
        return std::nullopt;
    }
    const auto list = resolved->List();
    for (const ResolvedCipher& cipher : list) {
        if (iv.size() < cipher.blockSize) {
            return std::nullopt;
        }
    }
    switch (resolved->mode) {
        case kModeCipherByCipher:
        case kModeCipherByCipherAlso:
            return resolved;
        case kModeBlockByBlock: {
            const bool sameBlocks = std::ranges::all_of(list, [&](const ResolvedCipher& c) {
                return c.blockSize == list.front().blockSize;
            });
            return sameBlocks ? resolved : std::nullopt;
        }
        default:
            return std::nullopt;
    }
}

}  // namespace

bool RegionEncrypt(std::span<std::uint8_t> buffer, std::span<const std::uint8_t> schedule,
                   std::span<const std::uint8_t> iv, std::span<const std::uint8_t> whitening,
                   std::uint32_t suite) {
    const auto resolved = Prepare(schedule, iv, whitening, suite);
    if (!resolved) {
        return false;
    }
    const auto list = resolved->List();
    if (resolved->mode == kModeBlockByBlock) {
        EncryptPass(buffer, list, iv, whitening);
        return true;
    }
    for (std::size_t i = 0; i < list.size(); ++i) {
        EncryptPass(buffer, list.subspan(i, 1), iv, whitening);
    }
    return true;
}

bool RegionDecrypt(std::span<std::uint8_t> buffer, std::span<const std::uint8_t> schedule,
                   std::span<const std::uint8_t> iv, std::span<const std::uint8_t> whitening,
                   std::uint32_t suite) {
    const auto resolved = Prepare(schedule, iv, whitening, suite);
    if (!resolved) {
        return false;
    }
    const auto list = resolved->List();
    if (resolved->mode == kModeBlockByBlock) {
        DecryptPass(buffer, list, iv, whitening);
        return true;
    }
    for (std::size_t i = list.size(); i-- > 0;) {
        DecryptPass(buffer, list.subspan(i, 1), iv, whitening);
    }
    return true;
}

}  // namespace crypto
