#include "crypto/ChunkChain.h"

#include <algorithm>
#include <cstring>
#include <ranges>

#include "platform/SecureMemory.h"

namespace crypto {
namespace {

// Blocks decrypted per batch: their chain words are kept on the stack meanwhile.
constexpr std::size_t kBatchBlocks = 64;

}  // namespace

std::uint32_t ChunkChain::Prefix(const std::uint8_t* block) {
    std::uint32_t prefix;
    std::memcpy(&prefix, block, sizeof(prefix));
    return prefix;
}

void ChunkChain::SetPrefix(std::uint8_t* block, std::uint32_t prefix) {
    std::memcpy(block, &prefix, sizeof(prefix));
}

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
    const std::uint8_t upperMask = blockSize == 16 ? 0xFF : 0x00;
    const std::uint8_t maskBytes[4] = {0xFF, 0xFF, upperMask, upperMask};
    chain.mask_ = Prefix(maskBytes);
    const std::uint8_t chainBytes[4] = {ivArea[0], ivArea[4], ivArea[8], ivArea[12]};
    chain.initialChain_ = Prefix(chainBytes) & chain.mask_;
    // With 16-byte blocks the two whitening bytes cover four chained bytes.
    const std::uint8_t whiteningBytes[4] = {ivArea[8], ivArea[12], ivArea[8], ivArea[12]};
    chain.whitening_ = Prefix(whiteningBytes) & chain.mask_;
    chain.Restart();
    return chain;
}

ChunkChain::~ChunkChain() {
    platform::SecureWipe(&initialChain_, sizeof(initialChain_));
    platform::SecureWipe(&chain_, sizeof(chain_));
    platform::SecureWipe(&whitening_, sizeof(whitening_));
}

void ChunkChain::Restart() {
    chain_ = initialChain_;
}

void ChunkChain::EncryptBlocks(std::span<std::uint8_t> blocks) {
    const std::size_t count = blocks.size() / blockSize_;
    const detail::ResolvedCipher& first = suite_.ciphers[0];
    if (suite_.count == 1 && first.ops->chainEncrypt != nullptr &&
        first.ops->chainEncrypt(first.schedule, blocks.data(), count,
                                reinterpret_cast<std::uint8_t*>(&chain_),
                                reinterpret_cast<const std::uint8_t*>(&whitening_))) {
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::uint8_t* block = blocks.data() + i * blockSize_;
        SetPrefix(block, Prefix(block) ^ chain_);
        for (const detail::ResolvedCipher& cipher : suite_.List()) {
            cipher.ops->encrypt(cipher.schedule, block, 1);
        }
        const std::uint32_t encrypted = Prefix(block);
        chain_ = encrypted & mask_;
        SetPrefix(block, encrypted ^ whitening_);
    }
}

void ChunkChain::SkipBlocks(std::span<const std::uint8_t> blocks) {
    const std::size_t count = blocks.size() / blockSize_;
    if (count > 0) {
        chain_ = (Prefix(blocks.data() + (count - 1) * blockSize_) ^ whitening_) & mask_;
    }
}

// Each block's next chain bytes are its own stored bytes without the whitening, so a batch
// is unwhitened first and then decrypted in one call per cipher, which lets the cipher keep
// several blocks in flight.
void ChunkChain::DecryptBlocks(std::span<std::uint8_t> blocks) {
    const detail::ResolvedCipher& first = suite_.ciphers[0];
    if (suite_.count == 1 && first.ops->chainDecrypt != nullptr &&
        first.ops->chainDecrypt(first.schedule, blocks.data(), blocks.size() / blockSize_,
                                reinterpret_cast<std::uint8_t*>(&chain_),
                                reinterpret_cast<const std::uint8_t*>(&whitening_))) {
        return;
    }
    std::uint32_t previous[kBatchBlocks];
    std::size_t remaining = blocks.size() / blockSize_;
    std::uint8_t* batch = blocks.data();
    while (remaining > 0) {
        const std::size_t count = std::min(remaining, kBatchBlocks);
        for (std::size_t i = 0; i < count; ++i) {
            std::uint8_t* block = batch + i * blockSize_;
            const std::uint32_t unwhitened = Prefix(block) ^ whitening_;
            SetPrefix(block, unwhitened);
            previous[i] = chain_;
            chain_ = unwhitened & mask_;
        }
        // Reverse iterators, not std::views::reverse, which clang 14 cannot build with
        // libstdc++ 12.
        const auto list = suite_.List();
        for (auto cipher = list.rbegin(); cipher != list.rend(); ++cipher) {
            cipher->ops->decrypt(cipher->schedule, batch, count);
        }
        for (std::size_t i = 0; i < count; ++i) {
            std::uint8_t* block = batch + i * blockSize_;
            SetPrefix(block, Prefix(block) ^ previous[i]);
        }
        batch += count * blockSize_;
        remaining -= count;
    }
    platform::SecureWipe(previous, sizeof(previous));
}

}  // namespace crypto
