// The chunk chain against small cases worked out from its rule, and its batched decryption
// against block-by-block decryption, on both AES paths.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "crypto/ChunkChain.h"
#include "tests/crypto/primitives/AesPathFixture.h"

namespace crypto {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes RandomBytes(std::mt19937& random, std::size_t count) {
    Bytes bytes(count);
    for (auto& b : bytes) {
        b = static_cast<std::uint8_t>(random());
    }
    return bytes;
}

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

class ChunkChainOnBothPaths : public test::AesPathTest {};

TEST_P(ChunkChainOnBothPaths, ChainsTheFirstFourBytesOf16ByteBlocks) {
    std::mt19937 random(1);
    const Stream stream(kSuiteAes, random);
    const Bytes plain = RandomBytes(random, 64);
    const Bytes& a = stream.ivArea;

    // Chain bytes A[0], A[4], A[8], A[12]; whitening A[8], A[12] on bytes 0-1 and again 2-3.
    Bytes expected = plain;
    std::uint8_t chain[4] = {a[0], a[4], a[8], a[12]};
    const std::uint8_t whitening[4] = {a[8], a[12], a[8], a[12]};
    for (std::size_t offset = 0; offset < expected.size(); offset += 16) {
        const auto block = std::span(expected).subspan(offset, 16);
        for (int i = 0; i < 4; ++i) {
            block[i] ^= chain[i];
        }
        CipherEncryptBlock(kCipherAes, block, stream.schedule);
        for (int i = 0; i < 4; ++i) {
            chain[i] = block[i];
            block[i] ^= whitening[i];
        }
    }
    Bytes data = plain;
    auto chunkChain = stream.Chain();
    EXPECT_EQ(chunkChain.BlockSize(), 16u);
    chunkChain.EncryptBlocks(data);
    EXPECT_EQ(data, expected);
}

TEST(ChunkChain, ChainsTheFirstTwoBytesOf8ByteBlocks) {
    std::mt19937 random(2);
    const Stream stream(6, random);  // CAST5
    const Bytes plain = RandomBytes(random, 16);
    const Bytes& a = stream.ivArea;

    Bytes expected = plain;
    expected[0] ^= a[0];
    expected[1] ^= a[4];
    CipherEncryptBlock(kCipherCast5, std::span(expected).first(8), stream.schedule);
    expected[8] ^= expected[0];
    expected[9] ^= expected[1];
    CipherEncryptBlock(kCipherCast5, std::span(expected).subspan(8), stream.schedule);
    for (const std::size_t offset : {0u, 8u}) {
        expected[offset] ^= a[8];
        expected[offset + 1] ^= a[12];
    }
    Bytes data = plain;
    auto chain = stream.Chain();
    EXPECT_EQ(chain.BlockSize(), 8u);
    chain.EncryptBlocks(data);
    EXPECT_EQ(data, expected);
}

TEST(ChunkChain, PassesEachBlockThroughAllCiphersWhateverTheMode) {
    std::mt19937 random(3);
    const Stream cascade(15, random);  // Twofish, AES
    const Bytes plain = RandomBytes(random, 16);
    Bytes expected = plain;
    const Bytes& a = cascade.ivArea;
    const std::uint8_t chain[4] = {a[0], a[4], a[8], a[12]};
    for (int i = 0; i < 4; ++i) {
        expected[i] ^= chain[i];
    }
    CipherEncryptBlock(kCipherTwofish, expected, cascade.schedule);
    CipherEncryptBlock(kCipherAes, expected,
                       std::span(cascade.schedule).subspan(CipherScheduleSize(kCipherTwofish)));
    const std::uint8_t whitening[4] = {a[8], a[12], a[8], a[12]};
    for (int i = 0; i < 4; ++i) {
        expected[i] ^= whitening[i];
    }
    Bytes data = plain;
    cascade.Chain().EncryptBlocks(data);
    EXPECT_EQ(data, expected);
}

TEST(ChunkChain, RunsOnAcrossCallsUntilRestarted) {
    std::mt19937 random(4);
    const Stream stream(kSuiteAes, random);
    const Bytes plain = RandomBytes(random, 160);

    Bytes whole = plain;
    stream.Chain().EncryptBlocks(whole);

    Bytes pieces = plain;
    auto chain = stream.Chain();
    chain.EncryptBlocks(std::span(pieces).first(16));  // a length block alone
    chain.EncryptBlocks(std::span(pieces).subspan(16));
    EXPECT_EQ(pieces, whole);

    Bytes again = plain;
    chain.Restart();
    chain.EncryptBlocks(again);
    EXPECT_EQ(again, whole);
}

TEST(ChunkChain, RefusesSuitesWithoutOneBlockSizeAndShortInputs) {
    std::mt19937 random(5);
    const Stream stream(14, random);
    // Suites 13 and 14 mix 8-byte and 16-byte blocks.
    EXPECT_FALSE(ChunkChain::Create(13, stream.schedule, stream.ivArea).has_value());
    EXPECT_FALSE(ChunkChain::Create(14, stream.schedule, stream.ivArea).has_value());
    for (const std::uint32_t suite : {0u, 10u, 11u, 12u, 20u}) {
        EXPECT_FALSE(ChunkChain::Create(suite, stream.schedule, stream.ivArea).has_value());
    }
    EXPECT_FALSE(ChunkChain::Create(1, stream.schedule, std::span(stream.ivArea).first(15)));
    EXPECT_FALSE(ChunkChain::Create(16, std::span(stream.schedule).first(5335), stream.ivArea));
}

TEST(ChunkChain, LeavesATailShorterThanABlock) {
    std::mt19937 random(6);
    const Stream stream(kSuiteAes, random);
    const Bytes plain = RandomBytes(random, 21);
    Bytes data = plain;
    stream.Chain().EncryptBlocks(data);
    EXPECT_TRUE(std::equal(plain.begin() + 16, plain.end(), data.begin() + 16));
    stream.Chain().DecryptBlocks(data);
    EXPECT_EQ(data, plain);
}

// 200 blocks cross several batches; one call, and one call per block, both restore the input.
TEST_P(ChunkChainOnBothPaths, DecryptsManyBlocksPerCallAsOneAtATime) {
    std::mt19937 random(7);
    for (const std::uint32_t suite : {1u, 5u, 16u}) {
        const Stream stream(suite, random);
        const std::size_t blockSize = SuiteBlockSize(suite);
        const Bytes plain = RandomBytes(random, 200 * blockSize);
        Bytes encrypted = plain;
        stream.Chain().EncryptBlocks(encrypted);

        Bytes together = encrypted;
        stream.Chain().DecryptBlocks(together);
        EXPECT_EQ(together, plain) << "suite " << suite << ", AES " << AesPathName();

        Bytes single = encrypted;
        auto chain = stream.Chain();
        for (std::size_t offset = 0; offset < single.size(); offset += blockSize) {
            chain.DecryptBlocks(std::span(single).subspan(offset, blockSize));
        }
        EXPECT_EQ(single, plain) << "suite " << suite;
    }
}

INSTANTIATE_TEST_SUITE_P(BothPaths, ChunkChainOnBothPaths,
                         testing::Values(test::AesPath::Tables, test::AesPath::AesNi),
                         test::AesPathLabel);

}  // namespace
}  // namespace crypto
