#include <gtest/gtest.h>

#include <array>
#include <cstdint>

#include "crypto/Hashes.h"
#include "crypto/random/PoolMixing.h"
#include "tests/crypto/primitives/Sha1PathLoop.h"

namespace crypto::random {
namespace {

using PoolBytes = std::array<std::uint8_t, kPoolBlockSize>;

PoolBytes PatternPool() {
    PoolBytes pool;
    for (std::size_t i = 0; i < pool.size(); ++i) {
        pool[i] = static_cast<std::uint8_t>(i * 151 + 7);
    }
    return pool;
}

// One window by hand: the state read as little-endian words, the message copied in two pieces
// around the end of the 512 pool bytes.
void MixWindowByHand(PoolBytes& pool, std::size_t start) {
    std::uint32_t state[5];
    for (int w = 0; w < 5; ++w) {
        const std::uint8_t* p = &pool[start + 4 * w];
        state[w] = p[0] | p[1] << 8 | p[2] << 16 | static_cast<std::uint32_t>(p[3]) << 24;
    }
    std::uint8_t message[64];
    const std::size_t beforeEnd = start + 64 <= 512 ? 64 : 512 - start;
    std::copy_n(pool.begin() + start, beforeEnd, message);
    std::copy_n(pool.begin(), 64 - beforeEnd, message + beforeEnd);
    Sha1Transform(state, message);
    for (int w = 0; w < 5; ++w) {
        for (int b = 0; b < 4; ++b) {
            pool[start + 4 * w + b] = static_cast<std::uint8_t>(state[w] >> (8 * b));
        }
    }
}

TEST(PoolMixing, TwentySixChainedWindowsWrappingAt512) {
    // The windows by hand run one after the other on the portable SHA-1; the mixing pairs them.
    PoolBytes expected = PatternPool();
    SetShaNiDisabled(true);
    for (std::size_t start = 0; start <= 500; start += 20) {
        MixWindowByHand(expected, start);
    }
    SetShaNiDisabled(false);
    test::OnEachSha1Path([&expected] {
        PoolBytes mixed = PatternPool();
        MixPool(mixed);
        EXPECT_EQ(mixed, expected);
    });
}

TEST(PoolMixing, ExtraBytesReachOnlyTheLastWindow) {
    const PoolBytes base = PatternPool();
    PoolBytes changed = base;
    changed[515] ^= 0x40;
    PoolBytes mixedBase = base;
    PoolBytes mixedChanged = changed;
    MixPool(mixedBase);
    MixPool(mixedChanged);
    for (std::size_t i = 0; i < 500; ++i) {
        ASSERT_EQ(mixedBase[i], mixedChanged[i]) << "offset " << i;
    }
    int differing = 0;
    for (std::size_t i = 500; i < kPoolBlockSize; ++i) {
        differing += mixedBase[i] != mixedChanged[i];
    }
    EXPECT_GT(differing, 10);
}

}  // namespace
}  // namespace crypto::random
