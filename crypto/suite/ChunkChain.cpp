#include "crypto/ChunkChain.h"

#include <algorithm>
#include <ranges>

#include "platform/SecureMemory.h"

namespace crypto {
namespace {

// Blocks decrypted per batch: their chain bytes are kept on the stack meanwhile.
constexpr std::size_t kBatchBlocks = 64;

void XorPrefix(std::uint8_t* block, const std::array<std::uint8_t, 4>& bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        block[i] ^= bytes[i];
    }
}

}  // namespace

std::optional<ChunkChain> ChunkChain::Create(std::uint32_t suite,
                                             std::span<const std::uint8_t> schedule,
                                             std::span<const std::uint8_t> ivArea) {
    auto resolved = detail::ResolveSuite(suite, schedule);
    if (!resolved || ivArea.size() < kIvAreaBytesRead) {
        return std::nullopt;
    }
    const std::size_t blockSize = resolved->ciphers[0].blockSize;
    const bool sameBlocks = std::ranges::all_of(
        resolved->List(),
        [&](const detail::ResolvedCipher& c) { return c.blockSize == blockSize; });
    if (!sameBlocks) {
        return std::nullopt;
    }
    ChunkChain chain;
    chain.suite_ = *resolved;
    chain.blockSize_ = blockSize;
    chain.initialChain_ = {ivArea[0], ivArea[4], ivArea[8], ivArea[12]};
    // With 16-byte blocks the two whitening bytes cover four chained bytes.
    chain.whitening_ = {ivArea[8], ivArea[12], ivArea[8], ivArea[12]};
    chain.Restart();
    return chain;
}

ChunkChain::~ChunkChain() {
    platform::SecureWipe(initialChain_.data(), initialChain_.size());
    platform::SecureWipe(chain_.data(), chain_.size());
    platform::SecureWipe(whitening_.data(), whitening_.size());
}

void ChunkChain::Restart() {
    chain_ = initialChain_;
}

void ChunkChain::EncryptBlocks(std::span<std::uint8_t> blocks) {
    const std::size_t chained = ChainedBytes();
    for (std::size_t offset = 0; offset + blockSize_ <= blocks.size(); offset += blockSize_) {
        std::uint8_t* block = blocks.data() + offset;
        XorPrefix(block, chain_, chained);
        for (const detail::ResolvedCipher& cipher : suite_.List()) {
            cipher.ops->encrypt(cipher.schedule, block, 1);
        }
        std::copy_n(block, chained, chain_.begin());
        XorPrefix(block, whitening_, chained);
    }
}

// Each block's next chain bytes are its own stored bytes without the whitening, so a batch
// is unwhitened first and then decrypted in one call per cipher, which lets the cipher keep
// several blocks in flight.
void ChunkChain::DecryptBlocks(std::span<std::uint8_t> blocks) {
    const std::size_t chained = ChainedBytes();
    std::array<std::array<std::uint8_t, 4>, kBatchBlocks> previous;
    std::size_t remaining = blocks.size() / blockSize_;
    std::uint8_t* batch = blocks.data();
    while (remaining > 0) {
        const std::size_t count = std::min(remaining, kBatchBlocks);
        for (std::size_t i = 0; i < count; ++i) {
            std::uint8_t* block = batch + i * blockSize_;
            XorPrefix(block, whitening_, chained);
            previous[i] = chain_;
            std::copy_n(block, chained, chain_.begin());
        }
        for (const detail::ResolvedCipher& cipher : std::views::reverse(suite_.List())) {
            cipher.ops->decrypt(cipher.schedule, batch, count);
        }
        for (std::size_t i = 0; i < count; ++i) {
            XorPrefix(batch + i * blockSize_, previous[i], chained);
        }
        batch += count * blockSize_;
        remaining -= count;
    }
    platform::SecureWipe(previous.data(), sizeof(previous));
}

}  // namespace crypto
