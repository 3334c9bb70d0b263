// Serpent with a 256-bit key and 32 rounds, in bitslice form. Key and block are 32-bit
// little-endian words, first word first (the byte order of the NESSIE vectors).

#include <array>
#include <bit>

#include "Common/Common/Endian.h"
#include "crypto/detail/BlockCiphers.h"
#include "crypto/detail/ScheduleWords.h"
#include "platform/SecureMemory.h"

namespace crypto::detail {
namespace {

using Zelmarik::LoadLittle;
using Zelmarik::StoreLittle;

constexpr int kRounds = 32;
constexpr int kRoundKeyWords = 4 * (kRounds + 1);
constexpr std::uint32_t kPhi = 0x9E3779B9;

using Sbox = std::uint8_t[16];
constexpr Sbox kSboxes[8] = {{3, 8, 15, 1, 10, 6, 5, 11, 14, 13, 4, 2, 7, 0, 9, 12},
                             {15, 12, 2, 7, 9, 0, 5, 10, 1, 11, 14, 8, 6, 13, 3, 4},
                             {8, 6, 7, 9, 3, 12, 10, 15, 13, 1, 14, 4, 0, 11, 5, 2},
                             {0, 15, 11, 8, 12, 9, 6, 3, 13, 1, 2, 4, 10, 7, 5, 14},
                             {1, 15, 8, 3, 12, 0, 11, 6, 2, 5, 4, 10, 9, 14, 7, 13},
                             {15, 5, 2, 11, 4, 10, 9, 12, 0, 3, 14, 8, 13, 6, 7, 1},
                             {7, 2, 12, 5, 8, 4, 6, 11, 14, 9, 1, 15, 13, 3, 10, 0},
                             {1, 13, 15, 0, 14, 8, 2, 11, 7, 4, 12, 10, 9, 3, 5, 6}};

constexpr std::array<std::array<std::uint8_t, 16>, 8> MakeInverseSboxes() {
    std::array<std::array<std::uint8_t, 16>, 8> inverse{};
    for (int box = 0; box < 8; ++box) {
        for (int v = 0; v < 16; ++v) {
            inverse[box][kSboxes[box][v]] = static_cast<std::uint8_t>(v);
        }
    }
    return inverse;
}

constexpr auto kInverseSboxes = MakeInverseSboxes();

// Each output bit of a 4-bit S-box as a 16-entry truth table, evaluated on 32 bit positions at
// once by a tree of selections on the input bits x0 (least significant) to x3. No table is
// indexed by data.
struct BitslicedSbox {
    std::uint16_t truth[4];
};

template <typename Table>
constexpr BitslicedSbox Bitslice(const Table& sbox) {
    BitslicedSbox sliced{};
    for (int out = 0; out < 4; ++out) {
        for (int v = 0; v < 16; ++v) {
            if (((sbox[v] >> out) & 1) != 0) {
                sliced.truth[out] = static_cast<std::uint16_t>(sliced.truth[out] | (1u << v));
            }
        }
    }
    return sliced;
}

constexpr std::array<BitslicedSbox, 8> MakeBitsliced(bool inverse) {
    std::array<BitslicedSbox, 8> sliced{};
    for (int box = 0; box < 8; ++box) {
        sliced[box] = inverse ? Bitslice(kInverseSboxes[box]) : Bitslice(kSboxes[box]);
    }
    return sliced;
}

constexpr auto kForward = MakeBitsliced(false);
constexpr auto kInverse = MakeBitsliced(true);

std::uint32_t Select(std::uint32_t ifClear, std::uint32_t ifSet, std::uint32_t selector) {
    return ifClear ^ ((ifClear ^ ifSet) & selector);
}

std::uint32_t EvaluateBit(std::uint16_t truth, const std::uint32_t x[4]) {
    std::uint32_t level[8];
    for (int i = 0; i < 8; ++i) {
        const std::uint32_t low = ((truth >> (2 * i)) & 1) != 0 ? ~0u : 0u;
        const std::uint32_t high = ((truth >> (2 * i + 1)) & 1) != 0 ? ~0u : 0u;
        level[i] = Select(low, high, x[0]);
    }
    for (int i = 0; i < 4; ++i) {
        level[i] = Select(level[2 * i], level[2 * i + 1], x[1]);
    }
    for (int i = 0; i < 2; ++i) {
        level[i] = Select(level[2 * i], level[2 * i + 1], x[2]);
    }
    return Select(level[0], level[1], x[3]);
}

void ApplySbox(const BitslicedSbox& sbox, std::uint32_t x[4]) {
    const std::uint32_t in[4] = {x[0], x[1], x[2], x[3]};
    for (int out = 0; out < 4; ++out) {
        x[out] = EvaluateBit(sbox.truth[out], in);
    }
}

void LinearTransform(std::uint32_t x[4]) {
    x[0] = std::rotl(x[0], 13);
    x[2] = std::rotl(x[2], 3);
    x[1] ^= x[0] ^ x[2];
    x[3] ^= x[2] ^ (x[0] << 3);
    x[1] = std::rotl(x[1], 1);
    x[3] = std::rotl(x[3], 7);
    x[0] ^= x[1] ^ x[3];
    x[2] ^= x[3] ^ (x[1] << 7);
    x[0] = std::rotl(x[0], 5);
    x[2] = std::rotl(x[2], 22);
}

void InverseLinearTransform(std::uint32_t x[4]) {
    x[2] = std::rotr(x[2], 22);
    x[0] = std::rotr(x[0], 5);
    x[2] ^= x[3] ^ (x[1] << 7);
    x[0] ^= x[1] ^ x[3];
    x[3] = std::rotr(x[3], 7);
    x[1] = std::rotr(x[1], 1);
    x[3] ^= x[2] ^ (x[0] << 3);
    x[1] ^= x[0] ^ x[2];
    x[2] = std::rotr(x[2], 3);
    x[0] = std::rotr(x[0], 13);
}

void XorRoundKey(const std::uint8_t* schedule, int round, std::uint32_t x[4]) {
    for (int i = 0; i < 4; ++i) {
        x[i] ^= ReadWord(schedule, 4 * round + i);
    }
}

void SerpentInit(const std::uint8_t* key, std::uint8_t* schedule) {
    // Prekeys w[-8..131], stored shifted by 8.
    std::uint32_t w[kRoundKeyWords + 8];
    for (int i = 0; i < 8; ++i) {
        w[i] = LoadLittle<std::uint32_t>(key + 4 * i);
    }
    for (int i = 8; i < kRoundKeyWords + 8; ++i) {
        const std::uint32_t mixed =
            w[i - 8] ^ w[i - 5] ^ w[i - 3] ^ w[i - 1] ^ kPhi ^ static_cast<std::uint32_t>(i - 8);
        w[i] = std::rotl(mixed, 11);
    }
    for (int round = 0; round <= kRounds; ++round) {
        std::uint32_t* k = w + 8 + 4 * round;
        ApplySbox(kForward[(3 - round) & 7], k);
    }
    WriteWords(schedule, w + 8, kRoundKeyWords);
    platform::SecureWipe(w, sizeof(w));
}

void SerpentEncrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    for (std::size_t b = 0; b < count; ++b, blocks += 16) {
        std::uint32_t x[4];
        for (int i = 0; i < 4; ++i) {
            x[i] = LoadLittle<std::uint32_t>(blocks + 4 * i);
        }
        for (int round = 0; round < kRounds; ++round) {
            XorRoundKey(schedule, round, x);
            ApplySbox(kForward[round & 7], x);
            if (round < kRounds - 1) {
                LinearTransform(x);
            }
        }
        XorRoundKey(schedule, kRounds, x);
        for (int i = 0; i < 4; ++i) {
            StoreLittle(blocks + 4 * i, x[i]);
        }
    }
}

void SerpentDecrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    for (std::size_t b = 0; b < count; ++b, blocks += 16) {
        std::uint32_t x[4];
        for (int i = 0; i < 4; ++i) {
            x[i] = LoadLittle<std::uint32_t>(blocks + 4 * i);
        }
        XorRoundKey(schedule, kRounds, x);
        for (int round = kRounds - 1; round >= 0; --round) {
            if (round < kRounds - 1) {
                InverseLinearTransform(x);
            }
            ApplySbox(kInverse[round & 7], x);
            XorRoundKey(schedule, round, x);
        }
        for (int i = 0; i < 4; ++i) {
            StoreLittle(blocks + 4 * i, x[i]);
        }
    }
}

}  // namespace

const BlockCipherOps kSerpentOps = {SerpentInit,        SerpentEncrypt, SerpentDecrypt,
                                    4 * kRoundKeyWords, nullptr,        nullptr};

}  // namespace crypto::detail
