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

// The steps of adding, mixing and output are pinned by the known answer below; a word goes in
// least significant byte first.
TEST_F(PoolStateTest, WordIsAddedLeastSignificantByteFirst) {
    PoolState byBytes{carried};
    pool.AddWord(0x04030201);
    const std::uint8_t littleEndian[] = {1, 2, 3, 4};
    byBytes.Add(littleEndian);
    EXPECT_EQ(Snapshot(pool), Snapshot(byBytes));
    EXPECT_EQ(pool.WritePos(), 4u);
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
