// CAST-128 (RFC 2144) with a 128-bit key and 16 rounds; big-endian words for key and block.

#include "Common/Common/Endian.h"
#include "crypto/detail/BlockCiphers.h"
#include "crypto/detail/CastFunctions.h"
#include "crypto/detail/ScheduleWords.h"
#include "platform/SecureMemory.h"

namespace crypto::detail {
namespace {

using Zelmarik::LoadBig;
using Zelmarik::StoreBig;

constexpr int kRounds = 16;
constexpr int kMaskingKeys = 0;    // word index of Km1..Km16 in the schedule
constexpr int kRotationKeys = 16;  // word index of Kr1..Kr16

// The key schedule works on 32 bytes: x0..xF at 0..15 and z0..zF at 16..31.
enum : std::uint8_t {
    x0,
    x1,
    x2,
    x3,
    x4,
    x5,
    x6,
    x7,
    x8,
    x9,
    xA,
    xB,
    xC,
    xD,
    xE,
    xF,
    z0,
    z1,
    z2,
    z3,
    z4,
    z5,
    z6,
    z7,
    z8,
    z9,
    zA,
    zB,
    zC,
    zD,
    zE,
    zF
};

// A new group of four bytes: `source` XOR S5..S8 of the first four bytes XOR one more lookup,
// in S-box order S7, S8, S5, S6 for the four groups of a step.
struct GroupStep {
    std::uint8_t target;
    std::uint8_t source;
    std::uint8_t bytes[5];
};

constexpr GroupStep kZFromX[4] = {{z0, x0, {xD, xF, xC, xE, x8}},
                                  {z4, x8, {z0, z2, z1, z3, xA}},
                                  {z8, xC, {z7, z6, z5, z4, x9}},
                                  {zC, x4, {zA, z9, zB, z8, xB}}};
constexpr GroupStep kXFromZ[4] = {{x0, z8, {z5, z7, z4, z6, z0}},
                                  {x4, z0, {x0, x2, x1, x3, z2}},
                                  {x8, z4, {x7, x6, x5, x4, z1}},
                                  {xC, zC, {xA, x9, xB, x8, z3}}};

// Four subkeys after each step: S5..S8 of the first four bytes XOR one more lookup, in S-box
// order S5, S6, S7, S8.
constexpr std::uint8_t kSubkeyBytes[4][4][5] = {
    {{z8, z9, z7, z6, z2}, {zA, zB, z5, z4, z6}, {zC, zD, z3, z2, z9}, {zE, zF, z1, z0, zC}},
    {{x3, x2, xC, xD, x8}, {x1, x0, xE, xF, xD}, {x7, x6, x8, x9, x3}, {x5, x4, xA, xB, x7}},
    {{z3, z2, zC, zD, z9}, {z1, z0, zE, zF, zC}, {z7, z6, z8, z9, z2}, {z5, z4, zA, zB, z6}},
    {{x8, x9, x7, x6, x3}, {xA, xB, x5, x4, x7}, {xC, xD, x3, x2, x8}, {xE, xF, x1, x0, xD}}};

constexpr int kGroupExtraBox[4] = {6, 7, 4, 5};

std::uint32_t Lookups(const std::uint8_t* state, const std::uint8_t bytes[5], int extraBox) {
    return kCastSboxes[4][state[bytes[0]]] ^ kCastSboxes[5][state[bytes[1]]] ^
           kCastSboxes[6][state[bytes[2]]] ^ kCastSboxes[7][state[bytes[3]]] ^
           kCastSboxes[extraBox][state[bytes[4]]];
}

void Cast5Init(const std::uint8_t* key, std::uint8_t* schedule) {
    std::uint8_t state[32];
    for (int i = 0; i < 16; ++i) {
        state[i] = key[i];
    }
    std::uint32_t subkeys[2 * kRounds];
    int next = 0;
    for (int pass = 0; pass < 2; ++pass) {
        for (int step = 0; step < 4; ++step) {
            const GroupStep* groups = step % 2 == 0 ? kZFromX : kXFromZ;
            for (int g = 0; g < 4; ++g) {
                const std::uint32_t word = LoadBig<std::uint32_t>(state + groups[g].source) ^
                                           Lookups(state, groups[g].bytes, kGroupExtraBox[g]);
                StoreBig(state + groups[g].target, word);
            }
            for (int k = 0; k < 4; ++k) {
                subkeys[next++] = Lookups(state, kSubkeyBytes[step][k], 4 + k);
            }
        }
    }
    for (int i = 0; i < kRounds; ++i) {
        WriteWord(schedule, kMaskingKeys + i, subkeys[i]);
        WriteWord(schedule, kRotationKeys + i, subkeys[kRounds + i] & 31);
    }
    platform::SecureWipe(state, sizeof(state));
    platform::SecureWipe(subkeys, sizeof(subkeys));
}

std::uint32_t Round(const std::uint8_t* schedule, int round, std::uint32_t data) {
    const std::uint32_t km = ReadWord(schedule, kMaskingKeys + round);
    const std::uint32_t kr = ReadWord(schedule, kRotationKeys + round);
    switch (round % 3) {
        case 0:
            return CastF1(data, km, kr);
        case 1:
            return CastF2(data, km, kr);
        default:
            return CastF3(data, km, kr);
    }
}

template <bool Decrypt>
void Cast5Blocks(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    for (std::size_t b = 0; b < count; ++b, blocks += 8) {
        std::uint32_t left = LoadBig<std::uint32_t>(blocks);
        std::uint32_t right = LoadBig<std::uint32_t>(blocks + 4);
        for (int i = 0; i < kRounds; ++i) {
            const std::uint32_t next = left ^ Round(schedule, Decrypt ? kRounds - 1 - i : i, right);
            left = right;
            right = next;
        }
        StoreBig(blocks, right);
        StoreBig(blocks + 4, left);
    }
}

}  // namespace

const BlockCipherOps kCast5Ops = {
    Cast5Init, Cast5Blocks<false>, Cast5Blocks<true>, 4 * 2 * kRounds, nullptr, nullptr};

}  // namespace crypto::detail
