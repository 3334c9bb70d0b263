#include <bit>

#include "Common/Common/Endian.h"
#include "crypto/CpuFeatures.h"
#include "crypto/Hashes.h"
#include "crypto/detail/Sha1Paths.h"
#include "platform/SecureMemory.h"

namespace crypto {
namespace detail {
namespace {

// The message schedule lives in a ring of 16 words, each extended in place when its round
// comes; the rounds are unrolled so that every index is a constant.
struct Sha1Rounds {
    std::uint32_t w[16];
    std::uint32_t v[5];  // a, b, c, d, e

    template <int Round>
    std::uint32_t Word() {
        if constexpr (Round >= 16) {
            w[Round % 16] = std::rotl(
                w[(Round - 3) % 16] ^ w[(Round - 8) % 16] ^ w[(Round - 14) % 16] ^ w[Round % 16],
                1);
        }
        return w[Round % 16];
    }

    template <int Round>
    void Step() {
        std::uint32_t& a = v[(100 - Round) % 5];
        std::uint32_t& b = v[(101 - Round) % 5];
        std::uint32_t& c = v[(102 - Round) % 5];
        std::uint32_t& d = v[(103 - Round) % 5];
        std::uint32_t& e = v[(104 - Round) % 5];
        std::uint32_t f;
        std::uint32_t k;
        if constexpr (Round < 20) {
            f = d ^ (b & (c ^ d));
            k = 0x5A827999;
        } else if constexpr (Round < 40) {
            f = b ^ c ^ d;
            k = 0x6ED9EBA1;
        } else if constexpr (Round < 60) {
            f = (b & c) | (d & (b | c));
            k = 0x8F1BBCDC;
        } else {
            f = b ^ c ^ d;
            k = 0xCA62C1D6;
        }
        e += std::rotl(a, 5) + f + k + Word<Round>();
        b = std::rotl(b, 30);
    }

    template <int... Round>
    void Steps(std::integer_sequence<int, Round...>) {
        (Step<Round>(), ...);
    }
};

}  // namespace

void Sha1CompressPortable(std::uint32_t* state, const std::uint8_t* block) {
    Sha1Rounds rounds;
    for (int i = 0; i < 16; ++i) {
        rounds.w[i] = Zelmarik::LoadBig<std::uint32_t>(block + 4 * i);
    }
    for (int i = 0; i < 5; ++i) {
        rounds.v[i] = state[i];
    }
    // Instead of moving five words each round, the names rotate over them: after 80 rounds,
    // a multiple of five, they stand where they started.
    rounds.Steps(std::make_integer_sequence<int, 80>());
    for (int i = 0; i < 5; ++i) {
        state[i] += rounds.v[i];
    }
    platform::SecureWipe(&rounds, sizeof(rounds));
}

}  // namespace detail

void Sha1Transform(std::span<std::uint32_t, 5> state, std::span<const std::uint8_t, 64> block) {
    if (ShaNiInUse()) {
        detail::Sha1CompressShaNi(state.data(), block.data());
    } else {
        detail::Sha1CompressPortable(state.data(), block.data());
    }
}

void Sha1TransformPair(std::span<std::uint32_t, 5> first,
                       std::span<const std::uint8_t, 64> firstBlock,
                       std::span<std::uint32_t, 5> second,
                       std::span<const std::uint8_t, 64> secondBlock) {
    if (ShaNiInUse()) {
        detail::Sha1CompressPairShaNi(first.data(), firstBlock.data(), second.data(),
                                      secondBlock.data());
    } else {
        detail::Sha1CompressPortable(first.data(), firstBlock.data());
        detail::Sha1CompressPortable(second.data(), secondBlock.data());
    }
}

}  // namespace crypto
