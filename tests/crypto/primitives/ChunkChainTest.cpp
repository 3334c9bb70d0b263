// The chunk chain against small cases worked out from its rule, and its batched decryption
// against block-by-block decryption, on both AES paths.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "crypto/ChunkChain.h"
#include "tests/crypto/primitives/AesPathFixture.h"
#include "tests/crypto/primitives/HexBytes.h"

namespace crypto {
namespace {

using Bytes = std::vector<std::uint8_t>;
using test::RandomBytes;

struct Stream {
    std::uint32_t suite;
    Bytes schedule = Bytes(kScheduleBlockSize);
    Bytes ivArea;

    Stream(std::uint32_t suiteId, std::mt19937& random)
        : suite(suiteId), ivArea(RandomBytes(random, 32)) {
        EXPECT_TRUE(SuiteInit(suite, RandomBytes(random, 128), schedule));
    }
    ChunkChain Chain() const {
        auto chain = ChunkChain::Create(suite, schedule, ivArea);
        EXPECT_TRUE(chain.has_value());
        return *chain;
    }
};

// The chain rule worked out with the bare block operations: the first four bytes of a 16-byte
// block (two of an 8-byte one) are chained, starting from A[0], A[4], A[8], A[12] of the IV
// area; each block passes through every cipher of the suite, whatever its mode; then the
// chained bytes are whitened with A[8], A[12], repeated.
Bytes Reference(const Stream& stream, const std::vector<std::uint32_t>& ciphers,
                const Bytes& plain) {
    const Bytes& a = stream.ivArea;
    const std::size_t blockSize = CipherBlockSize(ciphers.front());
    const std::size_t chained = blockSize == 16 ? 4 : 2;
    std::uint8_t chain[4] = {a[0], a[4], a[8], a[12]};
    const std::uint8_t whitening[4] = {a[8], a[12], a[8], a[12]};
    Bytes expected = plain;
    for (std::size_t offset = 0; offset < expected.size(); offset += blockSize) {
        const auto block = std::span(expected).subspan(offset, blockSize);
        for (std::size_t i = 0; i < chained; ++i) {
            block[i] ^= chain[i];
        }
        std::size_t scheduleOffset = 0;
        for (const std::uint32_t cipher : ciphers) {
            CipherEncryptBlock(cipher, block, std::span(stream.schedule).subspan(scheduleOffset));
            scheduleOffset += CipherScheduleSize(cipher);
        }
        for (std::size_t i = 0; i < chained; ++i) {
            chain[i] = block[i];
            block[i] ^= whitening[i];
        }
    }
    return expected;
}

void ExpectTheChainRule(std::uint32_t suite, const std::vector<std::uint32_t>& ciphers,
                        std::uint32_t seed) {
    std::mt19937 random(seed);
    const Stream stream(suite, random);
    const Bytes plain = RandomBytes(random, 64);
    Bytes data = plain;
    auto chain = stream.Chain();
    EXPECT_EQ(chain.BlockSize(), CipherBlockSize(ciphers.front()));
    chain.EncryptBlocks(data);
    EXPECT_EQ(data, Reference(stream, ciphers, plain)) << "suite " << suite;
}

class ChunkChainOnBothPaths : public test::AesPathTest {};

TEST_P(ChunkChainOnBothPaths, ChainsTheFirstFourBytesOf16ByteBlocks) {
    ExpectTheChainRule(kSuiteAes, {kCipherAes}, 1);
}

// CAST5 has 8-byte blocks; suite 15 is Twofish then AES.
TEST(ChunkChain, ChainsTwoBytesOf8ByteBlocksAndCascadesThroughAllCiphers) {
    ExpectTheChainRule(6, {kCipherCast5}, 2);
    ExpectTheChainRule(15, {kCipherTwofish, kCipherAes}, 3);
}

TEST(ChunkChain, RefusesSuitesWithoutOneBlockSizeAndShortInputs) {
    std::mt19937 random(5);
    const Stream stream(14, random);
    // Suites 13 and 14 mix 8-byte and 16-byte blocks.
    for (const std::uint32_t suite : {0u, 10u, 11u, 12u, 13u, 14u, 20u}) {
        EXPECT_FALSE(ChunkChain::Create(suite, stream.schedule, stream.ivArea).has_value());
    }
    EXPECT_FALSE(ChunkChain::Create(1, stream.schedule, std::span(stream.ivArea).first(15)));
    EXPECT_FALSE(ChunkChain::Create(16, std::span(stream.schedule).first(5335), stream.ivArea));
}

// 200 blocks cross several batches; one call, one call per block, and a run of blocks skipped
// and decrypted by a copy of the chain all restore the input.
TEST_P(ChunkChainOnBothPaths, DecryptsManyBlocksPerCallAsOneAtATime) {
    std::mt19937 random(7);
    for (const std::uint32_t suite : {1u, 5u, 16u}) {
        const Stream stream(suite, random);
        const std::size_t blockSize = SuiteBlockSize(suite);
        const Bytes plain = RandomBytes(random, 200 * blockSize + 5);  // a tail stays as it is
        Bytes encrypted = plain;
        stream.Chain().EncryptBlocks(encrypted);

        Bytes together = encrypted;
        stream.Chain().DecryptBlocks(together);
        EXPECT_EQ(together, plain) << "suite " << suite << ", AES " << AesPathName();

        Bytes single = encrypted;
        auto chain = stream.Chain();
        for (std::size_t offset = 0; offset + blockSize <= single.size(); offset += blockSize) {
            chain.DecryptBlocks(std::span(single).subspan(offset, blockSize));
        }
        EXPECT_EQ(single, plain) << "suite " << suite;

        // The reader decrypts a chunk's length block itself and leaves the data blocks to a
        // worker: skipping blocks must leave the chain as decrypting them would, and a copy taken
        // before the skip must decrypt them.
        Bytes split = encrypted;
        const auto data = std::span(split).subspan(blockSize, 150 * blockSize);
        auto reader = stream.Chain();
        reader.DecryptBlocks(std::span(split).first(blockSize));
        auto worker = reader;
        reader.SkipBlocks(data);
        reader.DecryptBlocks(std::span(split).subspan(151 * blockSize));
        worker.DecryptBlocks(data);
        EXPECT_EQ(split, plain) << "suite " << suite;
    }
}

INSTANTIATE_TEST_SUITE_P(BothPaths, ChunkChainOnBothPaths,
                         testing::Values(test::AesPath::Tables, test::AesPath::AesNi),
                         test::AesPathLabel);

}  // namespace
}  // namespace crypto
