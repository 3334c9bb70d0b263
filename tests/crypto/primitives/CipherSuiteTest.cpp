// The schedule layout and the region operations, against small cases worked out
// from the chaining rule with the bare block operations.

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "crypto/CipherSuite.h"
#include "tests/crypto/primitives/HexBytes.h"

namespace crypto {
namespace {

using Bytes = std::vector<std::uint8_t>;
using test::RandomBytes;

// A schedule block set up for `suite` from random key material.
struct Keyed {
    Bytes key;
    Bytes schedule = Bytes(kScheduleBlockSize);

    Keyed(std::uint32_t suite, std::mt19937& random) : key(RandomBytes(random, 128)) {
        EXPECT_TRUE(SuiteInit(suite, key, schedule));
    }
    std::span<const std::uint8_t> At(std::size_t offset) const {
        return std::span(schedule).subspan(offset);
    }
};

void XorInto(std::span<std::uint8_t> target, std::span<const std::uint8_t> source) {
    for (std::size_t i = 0; i < target.size(); ++i) {
        target[i] ^= source[i];
    }
}

class Region : public testing::Test {
protected:
    std::mt19937 random{42};
    Bytes iv = RandomBytes(random, 16);
    Bytes whitening = RandomBytes(random, 8);

    Bytes Encrypted(std::uint32_t suite, const Keyed& keyed, Bytes data) {
        EXPECT_TRUE(RegionEncrypt(data, keyed.schedule, iv, whitening, suite));
        return data;
    }
};

// Chaining over whole blocks from the IV, each block through every cipher of the suite in row
// order; what is stored is whitened with the 8 whitening bytes, repeated over the block. The
// chain takes the block before whitening.
Bytes Reference(const Keyed& keyed, const std::vector<std::uint32_t>& ciphers, const Bytes& iv,
                const Bytes& whitening, const Bytes& plain) {
    const std::size_t blockSize = CipherBlockSize(ciphers.front());
    Bytes expected = plain;
    Bytes chain(iv.begin(), iv.begin() + blockSize);
    for (std::size_t offset = 0; offset < expected.size(); offset += blockSize) {
        const auto block = std::span(expected).subspan(offset, blockSize);
        XorInto(block, chain);
        std::size_t scheduleOffset = 0;
        for (const std::uint32_t cipher : ciphers) {
            CipherEncryptBlock(cipher, block, keyed.At(scheduleOffset));
            scheduleOffset += CipherScheduleSize(cipher);
        }
        chain.assign(block.begin(), block.end());
        for (std::size_t i = 0; i < blockSize; ++i) {
            block[i] ^= whitening[i % 8];
        }
    }
    return expected;
}

// AES alone, Blowfish alone (8-byte blocks: eight bytes of the IV are read), and suite 17,
// AES then Serpent in mode 2.
TEST_F(Region, ChainsBlocksThroughEveryCipherAndWhitensWhatIsStored) {
    const std::pair<std::uint32_t, std::vector<std::uint32_t>> suites[] = {
        {kSuiteAes, {kCipherAes}}, {5, {kCipherBlowfish}}, {17, {kCipherAes, kCipherSerpent}}};
    for (const auto& [suite, ciphers] : suites) {
        const Keyed keyed(suite, random);
        const Bytes plain = RandomBytes(random, 32);
        const Bytes expected = Reference(keyed, ciphers, iv, whitening, plain);
        EXPECT_EQ(Encrypted(suite, keyed, plain), expected) << "suite " << suite;
        if (suite == 5) {
            iv[8] ^= 0xFF;  // beyond the block: not read
            EXPECT_EQ(Encrypted(suite, keyed, plain), expected);
        }
    }
}

// Modes 1 and 3 run one whole pass per cipher, each with its own block size and the chain
// restarted at the IV: suite 13 is a Blowfish region followed by an AES region.
TEST_F(Region, Mode3RunsOnePassPerCipherEachFromTheIv) {
    const Keyed keyed(13, random);
    Bytes blowfishOnly(kScheduleBlockSize);
    Bytes aesOnly(kScheduleBlockSize);
    ASSERT_TRUE(SuiteInit(5, keyed.key, blowfishOnly));
    ASSERT_TRUE(SuiteInit(kSuiteAes, std::span(keyed.key).subspan(56), aesOnly));
    const Bytes plain = RandomBytes(random, 48);

    Bytes expected = plain;
    ASSERT_TRUE(RegionEncrypt(expected, blowfishOnly, iv, whitening, 5));
    ASSERT_TRUE(RegionEncrypt(expected, aesOnly, iv, whitening, kSuiteAes));
    EXPECT_EQ(Encrypted(13, keyed, plain), expected);
}

TEST_F(Region, LeavesShortTailsUnchanged) {
    const Keyed keyed(kSuiteAes, random);
    const Bytes plain = RandomBytes(random, 20);
    const Bytes encrypted = Encrypted(kSuiteAes, keyed, plain);
    EXPECT_TRUE(std::equal(plain.begin() + 16, plain.end(), encrypted.begin() + 16));
    EXPECT_FALSE(std::equal(plain.begin(), plain.begin() + 16, encrypted.begin()));
}

TEST_F(Region, DecryptionUndoesEncryptionForEverySuite) {
    for (const std::uint32_t suite : {1, 2, 3, 4, 5, 6, 7, 8, 9, 13, 14, 15, 16, 17, 18, 19}) {
        const Keyed keyed(suite, random);
        const Bytes plain = RandomBytes(random, 96);
        Bytes data = Encrypted(suite, keyed, plain);
        ASSERT_NE(data, plain) << "suite " << suite;
        ASSERT_TRUE(RegionDecrypt(data, keyed.schedule, iv, whitening, suite));
        EXPECT_EQ(data, plain) << "suite " << suite;
    }
}

TEST_F(Region, RefusesWhatItCannotTransformAndLeavesTheBuffers) {
    const Keyed keyed(16, random);
    const Bytes plain = RandomBytes(random, 32);
    Bytes data = plain;
    for (const std::uint32_t suite : {0u, 10u, 11u, 12u, 20u}) {
        EXPECT_FALSE(RegionEncrypt(data, keyed.schedule, iv, whitening, suite));
        EXPECT_FALSE(RegionDecrypt(data, keyed.schedule, iv, whitening, suite));
    }
    EXPECT_FALSE(RegionEncrypt(data, std::span(keyed.schedule).first(5000), iv, whitening, 16));
    EXPECT_FALSE(RegionEncrypt(data, keyed.schedule, std::span(iv).first(15), whitening, 16));
    EXPECT_FALSE(RegionEncrypt(data, keyed.schedule, iv, std::span(whitening).first(7), 16));
    EXPECT_EQ(data, plain);

    Bytes schedule(kScheduleBlockSize, 0xEE);
    const Bytes key(128, 7);
    EXPECT_FALSE(SuiteInit(0, key, schedule));
    EXPECT_FALSE(SuiteInit(14, std::span(key).first(119), schedule));
    EXPECT_FALSE(SuiteInit(16, key, std::span(schedule).first(kScheduleBlockSize - 1)));
    EXPECT_TRUE(std::all_of(schedule.begin(), schedule.end(), [](auto b) { return b == 0xEE; }));
    EXPECT_TRUE(SuiteInit(14, std::span(key).first(120), schedule));
}

}  // namespace
}  // namespace crypto
