#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "crypto/Hashes.h"
#include "crypto/random/PoolState.h"
#include "tests/crypto/primitives/HexBytes.h"
#include "tests/crypto/primitives/Sha1PathLoop.h"

namespace crypto::random {
namespace {

using PoolBytes = std::array<std::uint8_t, kPoolBlockSize>;

// Records the order of polls ("S" slow, "F" fast) and adds the bytes it is given.
class ScriptedSources final : public platform::EntropySources {
public:
    void FastPoll(platform::EntropySink& sink) override {
        calls += 'F';
        sink.Add(fastBytes);
    }
    void SlowPoll(platform::EntropySink& sink) override {
        calls += 'S';
        sink.Add(slowBytes);
    }

    std::string calls;
    std::vector<std::uint8_t> fastBytes;
    std::vector<std::uint8_t> slowBytes;
};

PoolBytes Snapshot(const PoolState& pool) {
    PoolBytes bytes;
    std::copy(pool.Bytes().begin(), pool.Bytes().end(), bytes.begin());
    return bytes;
}

// A pool of mixed, unequal bytes.
void Stir(PoolState& pool) {
    const std::uint8_t seed[] = {0x5A, 0xC3, 0x11};
    pool.Add(seed);
}

class PoolStateTest : public ::testing::Test {
protected:
    CarriedPoolState carried;
    PoolState pool{carried};
    ScriptedSources sources;
};

TEST_F(PoolStateTest, EachByteIsAddedModulo256AtTheWritePositionThenMixed) {
    PoolBytes expected = Snapshot(pool);
    EXPECT_EQ(pool.WritePos(), 0u);
    // 0xFF tells addition from XOR on almost every byte value.
    const std::uint8_t bytes[] = {0xFF, 0xFF, 0x80};
    for (std::size_t i = 0; i < 3; ++i) {
        expected[i] = static_cast<std::uint8_t>(expected[i] + bytes[i]);
        MixPool(expected);
    }
    pool.Add(bytes);
    EXPECT_EQ(Snapshot(pool), expected);
    EXPECT_EQ(pool.WritePos(), 3u);

    // A word goes in least significant byte first.
    CarriedPoolState otherCarried;
    PoolState byWord{otherCarried};
    PoolState byBytes{otherCarried};
    byWord.AddWord(0x04030201);
    const std::uint8_t littleEndian[] = {1, 2, 3, 4};
    byBytes.Add(littleEndian);
    EXPECT_EQ(Snapshot(byWord), Snapshot(byBytes));
}

TEST_F(PoolStateTest, WritePositionWrapsAfter512Bytes) {
    const std::vector<std::uint8_t> fill(kPoolSize, 0x33);
    pool.Add(fill);
    EXPECT_EQ(pool.WritePos(), 512u);

    PoolBytes expected = Snapshot(pool);
    expected[0] = static_cast<std::uint8_t>(expected[0] + 0x9D);
    MixPool(expected);
    const std::uint8_t next[] = {0x9D};
    pool.Add(next);
    EXPECT_EQ(pool.WritePos(), 1u);
    EXPECT_EQ(Snapshot(pool), expected);
}

TEST_F(PoolStateTest, OutputIsPoolBytesXoredWithTheFollowingInvertedBytes) {
    Stir(pool);
    const PoolBytes before = Snapshot(pool);
    std::array<std::uint8_t, 100> first{};
    pool.GetBytes(sources, first.data(), first.size(), false);
    for (std::size_t k = 0; k < first.size(); ++k) {
        ASSERT_EQ(first[k], before[k] ^ static_cast<std::uint8_t>(~before[100 + k])) << k;
    }
    const PoolBytes after = Snapshot(pool);
    for (std::size_t i = 0; i < kPoolSize; ++i) {
        ASSERT_EQ(after[i], static_cast<std::uint8_t>(~before[i])) << i;
    }
    for (std::size_t i = kPoolSize; i < kPoolBlockSize; ++i) {
        EXPECT_EQ(after[i], before[i]) << "extra byte " << i << " is no pool byte";
    }
    EXPECT_EQ(carried.readPos, 200u);

    // The next request goes on behind the XORed bytes, on the pool inverted back.
    std::array<std::uint8_t, 10> second{};
    pool.GetBytes(sources, second.data(), second.size(), false);
    for (std::size_t k = 0; k < second.size(); ++k) {
        EXPECT_EQ(second[k], static_cast<std::uint8_t>(~before[200 + k]) ^ before[210 + k]) << k;
    }
}

TEST_F(PoolStateTest, ReadPositionWrapsAt512AndCountsAbove512KeepWrapping) {
    Stir(pool);
    carried.readPos = 500;
    const PoolBytes before = Snapshot(pool);
    std::vector<std::uint8_t> out(600);
    pool.GetBytes(sources, out.data(), static_cast<std::uint32_t>(out.size()), false);
    for (std::size_t k = 0; k < out.size(); ++k) {
        const std::uint8_t copied = before[(500 + k) % kPoolSize];
        const std::uint8_t xored = static_cast<std::uint8_t>(~before[(1100 + k) % kPoolSize]);
        ASSERT_EQ(out[k], copied ^ xored) << k;
    }
    EXPECT_EQ(carried.readPos, (500u + 1200u) % 512u);
}

TEST_F(PoolStateTest, CountZeroStillPollsAndInverts) {
    Stir(pool);
    const PoolBytes before = Snapshot(pool);
    pool.GetBytes(sources, nullptr, 0, false);
    EXPECT_EQ(sources.calls, "SFF");
    const PoolBytes after = Snapshot(pool);
    for (std::size_t i = 0; i < kPoolSize; ++i) {
        ASSERT_EQ(after[i], static_cast<std::uint8_t>(~before[i])) << i;
    }
    EXPECT_EQ(carried.readPos, 0u);
}

TEST_F(PoolStateTest, SlowPollOnFirstRequestOrWhenForcedAndNotAgainAfterARestart) {
    std::uint8_t out[4];
    pool.GetBytes(sources, out, sizeof(out), false);
    pool.GetBytes(sources, out, sizeof(out), false);
    pool.GetBytes(sources, out, sizeof(out), true);
    EXPECT_EQ(sources.calls,
              "SFF"
              "FF"
              "SFF");

    PoolState restarted{carried};
    EXPECT_EQ(restarted.WritePos(), 0u);
    ScriptedSources later;
    restarted.GetBytes(later, out, sizeof(out), false);
    EXPECT_EQ(later.calls, "FF");
    EXPECT_EQ(carried.readPos, 4 * 2 * sizeof(out)) << "four requests, each reading twice";
}

TEST_F(PoolStateTest, SlowPollGoesInBeforeTheCopyAndFastPollsAroundTheInversion) {
    sources.slowBytes = {1, 2, 3};
    sources.fastBytes = {9, 8};
    PoolBytes expected = Snapshot(pool);
    auto add = [&expected,
                position = std::size_t{0}](const std::vector<std::uint8_t>& bytes) mutable {
        for (const std::uint8_t b : bytes) {
            expected[position] = static_cast<std::uint8_t>(expected[position] + b);
            ++position;
            MixPool(expected);
        }
    };
    add(sources.slowBytes);
    add(sources.fastBytes);
    const PoolBytes copiedFrom = expected;
    for (std::size_t i = 0; i < kPoolSize; ++i) {
        expected[i] = static_cast<std::uint8_t>(~expected[i]);
    }
    add(sources.fastBytes);

    std::array<std::uint8_t, 16> out{};
    pool.GetBytes(sources, out.data(), out.size(), false);
    for (std::size_t k = 0; k < out.size(); ++k) {
        EXPECT_EQ(out[k], copiedFrom[k] ^ expected[16 + k]) << k;
    }
    EXPECT_EQ(Snapshot(pool), expected);
}

// Fixed inputs give fixed bytes: any change to the mixing or the output steps, or a faster SHA-1
// that is not the same function, shows here. The values come from an independent model of the
// pool written from its description.
TEST(PoolStateKnownAnswer, FixedPollsGiveFixedBytesOnEachSha1Path) {
    test::OnEachSha1Path([] {
        CarriedPoolState carried;
        PoolState pool{carried};
        ScriptedSources sources;
        for (std::size_t i = 0; i < 600; ++i) {  // enough to wrap the write position
            sources.slowBytes.push_back(static_cast<std::uint8_t>(i * 37 + 11));
        }
        sources.fastBytes = {0x5A, 0xC3, 0x00, 0xFF, 0x10};
        std::array<std::uint8_t, 64> first{};
        std::array<std::uint8_t, 16> second{};
        pool.GetBytes(sources, first.data(), first.size(), true);
        pool.GetBytes(sources, second.data(), second.size(), false);
        EXPECT_EQ(test::ToHex(first),
                  "6e393d0eaf47797240ccc0d5483e577e1ccbee8289a6c8830937c2dcf1a93fa0"
                  "d48ef574b28a4a3f5bfd542a3a8f1cc92cdd0aaed656664bdb2c80a77c8e6f62");
        EXPECT_EQ(test::ToHex(second), "2b351d91f8667b6d188d04c343c0e0e1");
        EXPECT_EQ(pool.WritePos(), 108u);
        EXPECT_EQ(carried.readPos, 160u);

        Sha256Context context;
        Sha256Init(context);
        Sha256Update(context, pool.Bytes());
        std::array<std::uint8_t, kSha256DigestSize> digest{};
        Sha256Final(context, digest);
        EXPECT_EQ(test::ToHex(digest),
                  "26b6c80756a9a6028e7efb7cf21103d721564e6323a9b51e8a00c5612c6e5125");
    });
}

}  // namespace
}  // namespace crypto::random
