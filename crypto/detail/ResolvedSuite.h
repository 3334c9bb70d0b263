#pragma once
// A suite row turned into what the block loops need: for each cipher its operations, its part
// of the schedule block and its block size. Resolved once per region or data stream.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "crypto/CipherSuite.h"
#include "crypto/detail/BlockCiphers.h"

namespace crypto::detail {

struct ResolvedCipher {
    const BlockCipherOps* ops;
    const std::uint8_t* schedule;
    std::size_t blockSize;
};

struct ResolvedSuite {
    std::array<ResolvedCipher, kMaxSuiteCiphers> ciphers;
    std::size_t count;
    std::uint32_t mode;

    std::span<const ResolvedCipher> List() const { return std::span(ciphers).first(count); }
};

// The operations of a cipher id, or null.
const BlockCipherOps* FindCipherOps(std::uint32_t cipher);

// Empty for an empty or unknown suite, or a schedule block too short for it.
std::optional<ResolvedSuite> ResolveSuite(std::uint32_t suite,
                                          std::span<const std::uint8_t> schedule);

}  // namespace crypto::detail
