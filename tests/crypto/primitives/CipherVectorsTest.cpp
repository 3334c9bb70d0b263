// Published vectors for the ciphers, in this system's byte orders, on both AES paths; the
// many-blocks entry against single blocks; round trips over random keys.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <thread>
#include <tuple>
#include <vector>

#include "crypto/CipherSuite.h"
#include "crypto/CpuFeatures.h"
#include "tests/crypto/primitives/AesPathFixture.h"
#include "tests/crypto/primitives/HexBytes.h"

namespace crypto {
namespace {

using test::AesPath;
using test::FromHex;
using test::RandomBytes;
using test::ToHex;

struct CipherVector {
    std::uint32_t cipher;
    const char* key;  // the bytes the cipher uses; the rest of its key size is filled with 0xA5
    const char* plain;
    const char* encrypted;
};

// Sources: AES FIPS 197 C.3; Serpent NESSIE set 4 #0; Twofish paper (the first entry of its
// 256-bit ECB table); Blowfish, one of Eric Young's vectors
// with the 8-byte key repeated to 56 bytes and each half stored little-endian; CAST5 RFC 2144
// B.1; CAST6 RFC 2612 (128-bit key); RC5-32/12/16 and RC6-32/20/16 from their papers.
constexpr CipherVector kVectors[] = {
    {kCipherAes, "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
     "00112233445566778899aabbccddeeff", "8ea2b7ca516745bfeafc49904b496089"},
    {kCipherSerpent, "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
     "00112233445566778899aabbccddeeff", "2868b7a2d28ecd5e4fdefac3c4330074"},
    {kCipherTwofish, "0000000000000000000000000000000000000000000000000000000000000000",
     "00000000000000000000000000000000", "57ff739d4dc92c1bd7fc01700cc8216f"},
    {kCipherBlowfish,
     "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef01234567"
     "89abcdef0123456789abcdef",
     "1111111111111111", "80c3f96196b08122"},
    {kCipherCast5, "0123456712345678234567893456789a", "0123456789abcdef", "238b4fe5847e44b2"},
    {kCipherCast6, "2342bb9efa38542c0af75647f29f615d", "00000000000000000000000000000000",
     "c842a08972b43d20836c91d1b7530f6b"},
    {kCipherRc5, "00000000000000000000000000000000", "0000000000000000", "21a5dbee154b8f6d"},
    {kCipherRc6, "0123456789abcdef0112233445566778", "02132435465768798a9bacbdcedfe0f1",
     "524e192f4715c6231f51f6367ea43f18"},
};

constexpr std::uint32_t kAllCiphers[] = {kCipherAes,   kCipherSerpent,  kCipherTwofish,
                                         kCipherMars,  kCipherBlowfish, kCipherCast5,
                                         kCipherCast6, kCipherRc5,      kCipherRc6};

std::vector<std::uint8_t> KeyMaterial(std::uint32_t cipher, const char* usedHex) {
    std::vector<std::uint8_t> key = FromHex(usedHex);
    key.resize(CipherKeySize(cipher), 0xA5);
    return key;
}

std::vector<std::uint8_t> Schedule(std::uint32_t cipher, std::span<const std::uint8_t> key) {
    std::vector<std::uint8_t> schedule(kScheduleBlockSize);
    EXPECT_TRUE(CipherInit(cipher, key, schedule));
    return schedule;
}

class CipherVectors : public test::AesPathTestWith<std::tuple<CipherVector, AesPath>> {};

TEST_P(CipherVectors, EncryptsAndDecryptsThePublishedBlock) {
    const CipherVector& v = std::get<0>(GetParam());
    const auto schedule = Schedule(v.cipher, KeyMaterial(v.cipher, v.key));
    auto block = FromHex(v.plain);
    ASSERT_EQ(block.size(), CipherBlockSize(v.cipher));
    CipherEncryptBlock(v.cipher, block, schedule);
    EXPECT_EQ(ToHex(block), v.encrypted) << "AES path " << AesPathName();
    CipherDecryptBlock(v.cipher, block, schedule);
    EXPECT_EQ(ToHex(block), v.plain);
}

INSTANTIATE_TEST_SUITE_P(Published, CipherVectors,
                         testing::Combine(testing::ValuesIn(kVectors),
                                          testing::Values(AesPath::Tables, AesPath::AesNi)));

class EveryCipher : public test::AesPathTestWith<std::tuple<std::uint32_t, AesPath>> {
protected:
    std::uint32_t Cipher() const { return std::get<0>(GetParam()); }
};

// 255 blocks and a short tail reach every remainder of the batched paths: the batch equals
// one block at a time, the tail stays, and decryption restores the input, for random keys.
TEST_P(EveryCipher, ManyBlocksInOneCallEqualOneAtATimeAndDecrypt) {
    std::mt19937 random(Cipher());
    const std::size_t blockSize = CipherBlockSize(Cipher());
    for (int trial = 0; trial < 10; ++trial) {
        const auto schedule = Schedule(Cipher(), RandomBytes(random, CipherKeySize(Cipher())));
        const std::size_t blocks = trial == 0 ? 255 : 3;
        const auto plain = RandomBytes(random, blocks * blockSize + 5);
        auto together = plain;
        CipherEncryptBlocks(Cipher(), together, schedule);
        auto single = plain;
        for (std::size_t offset = 0; offset + blockSize <= single.size(); offset += blockSize) {
            CipherEncryptBlock(Cipher(), std::span(single).subspan(offset, blockSize), schedule);
        }
        ASSERT_EQ(together, single) << "trial " << trial;
        ASSERT_FALSE(std::equal(plain.begin(), plain.begin() + blockSize, together.begin()));
        EXPECT_TRUE(std::equal(plain.end() - 5, plain.end(), together.end() - 5));
        CipherDecryptBlocks(Cipher(), together, schedule);
        ASSERT_EQ(together, plain) << "trial " << trial;
    }
}

INSTANTIATE_TEST_SUITE_P(Ciphers, EveryCipher,
                         testing::Combine(testing::ValuesIn(kAllCiphers),
                                          testing::Values(AesPath::Tables, AesPath::AesNi)));

TEST(CipherInit, RefusesUnknownCiphersAndShortBuffers) {
    std::vector<std::uint8_t> key(64, 1);
    std::vector<std::uint8_t> schedule(kScheduleBlockSize, 0xEE);
    EXPECT_FALSE(CipherInit(0, key, schedule));
    EXPECT_FALSE(CipherInit(10, key, schedule));
    EXPECT_FALSE(CipherInit(kCipherAes, std::span(key).first(31), schedule));
    EXPECT_FALSE(CipherInit(kCipherTwofish, key, std::span(schedule).first(4287)));
    // RC6's 44 round keys take 176 bytes, more than its 160 in the table.
    EXPECT_FALSE(CipherInit(kCipherRc6, key, std::span(schedule).first(160)));
    EXPECT_TRUE(std::all_of(schedule.begin(), schedule.end(), [](auto b) { return b == 0xEE; }));
}

std::uint32_t ScheduleWord(const std::vector<std::uint8_t>& schedule, std::size_t index) {
    std::uint32_t word;
    std::memcpy(&word, schedule.data() + 4 * index, sizeof(word));
    return word;
}

// The key fix-up sets the two low bits of every multiplication key K[5], K[7], ... K[35] and
// leaves the additive keys as the expansion made them.
TEST(MarsKeyExpansion, SetsTheLowBitsOfTheMultiplicationKeys) {
    std::mt19937 random(4);
    int additiveWithLowBitsSet = 0;
    for (int trial = 0; trial < 200; ++trial) {
        const auto schedule = Schedule(kCipherMars, RandomBytes(random, 56));
        for (std::size_t i = 5; i <= 35; i += 2) {
            ASSERT_EQ(ScheduleWord(schedule, i) & 3, 3u) << "K[" << i << "]";
        }
        additiveWithLowBitsSet += (ScheduleWord(schedule, 4) & 3) == 3;
    }
    EXPECT_LT(additiveWithLowBitsSet, 100);
}

TEST(TwofishTables, AreBuiltOnceForConcurrentKeySetups) {
    std::vector<std::uint8_t> key(32, 0x3C);
    std::vector<std::vector<std::uint8_t>> schedules(4,
                                                     std::vector<std::uint8_t>(kScheduleBlockSize));
    std::vector<std::thread> threads;
    for (auto& schedule : schedules) {
        threads.emplace_back([&] { EXPECT_TRUE(CipherInit(kCipherTwofish, key, schedule)); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (const auto& schedule : schedules) {
        EXPECT_EQ(schedule, schedules.front());
    }
}

}  // namespace
}  // namespace crypto
