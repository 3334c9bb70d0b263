#pragma once
// The block transform of an entry's data stream. All blocks of one entry form one chain: only
// the first two bytes of a block (four with 16-byte blocks) are chained, from the ciphertext
// of the block before, and two whitening bytes are XORed onto them after encryption. Every
// block passes through all ciphers of the suite, whatever the suite's mode.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "crypto/CipherSuite.h"
#include "crypto/detail/ResolvedSuite.h"

namespace crypto {

class ChunkChain {
public:
    static constexpr std::size_t kIvAreaBytesRead = 16;

    // Chain bytes start as ivArea[0], [4], [8], [12]; the whitening bytes are ivArea[8] and
    // [12]. Empty for a suite that cannot carry a data stream (empty, unknown, or ciphers of
    // different block sizes, as suite 13), a schedule too short, or an IV area under 16 bytes.
    // The schedule is borrowed and must outlive the chain.
    static std::optional<ChunkChain> Create(std::uint32_t suite,
                                            std::span<const std::uint8_t> schedule,
                                            std::span<const std::uint8_t> ivArea);

    ChunkChain(const ChunkChain& other) = default;
    ChunkChain& operator=(const ChunkChain& other) = default;
    ~ChunkChain();

    // B: 8 or 16.
    std::size_t BlockSize() const { return blockSize_; }

    // Starts the chain afresh, as for the first block of a new entry.
    void Restart();

    // Whole blocks of `blocks` in place, in order; a tail shorter than a block stays.
    void EncryptBlocks(std::span<std::uint8_t> blocks);
    void DecryptBlocks(std::span<std::uint8_t> blocks);
    // Moves the chain past whole encrypted blocks without decrypting them, so that a copy of
    // the chain taken before can decrypt them elsewhere, on another thread.
    void SkipBlocks(std::span<const std::uint8_t> blocks);

private:
    ChunkChain() = default;

    // The first four bytes of a block as one word in memory order, and back.
    static std::uint32_t Prefix(const std::uint8_t* block);
    static void SetPrefix(std::uint8_t* block, std::uint32_t prefix);

    detail::ResolvedSuite suite_{};
    std::size_t blockSize_ = 0;
    // Words of the first four bytes of a block; `mask_` keeps the two that take part in 8-byte
    // blocks, all four in 16-byte blocks.
    std::uint32_t mask_ = 0;
    std::uint32_t initialChain_ = 0;
    std::uint32_t chain_ = 0;
    std::uint32_t whitening_ = 0;
};

}  // namespace crypto
