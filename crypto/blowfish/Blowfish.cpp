// Blowfish, 16 rounds, with a 448-bit key. The key is taken as published (big-endian words, the
// bytes used in a cycle); a block is two 32-bit halves stored little-endian, L first.

#include <utility>

#include "Common/Common/Endian.h"
#include "crypto/detail/BlockCiphers.h"
#include "crypto/detail/BlowfishTables.h"
#include "crypto/detail/ScheduleWords.h"
#include "platform/SecureMemory.h"

namespace crypto::detail {
namespace {

using Zelmarik::LoadLittle;
using Zelmarik::StoreLittle;

constexpr int kRounds = 16;
constexpr std::size_t kKeyBytes = 56;
constexpr int kSubkeys = kRounds + 2;
constexpr std::size_t kSboxOffset = 4 * kSubkeys;
constexpr std::size_t kScheduleSpace = kSboxOffset + 4 * 4 * 256;

// Subkeys and S-boxes while the schedule is built, and as words during encryption.
struct State {
    std::uint32_t p[kSubkeys];
    std::uint32_t s[4][256];
};

template <typename Lookup>
std::uint32_t F(const Lookup& sbox, std::uint32_t x) {
    return ((sbox(0, x >> 24) + sbox(1, (x >> 16) & 0xFF)) ^ sbox(2, (x >> 8) & 0xFF)) +
           sbox(3, x & 0xFF);
}

template <typename Subkey, typename Lookup>
void EncryptHalves(const Subkey& p, const Lookup& sbox, std::uint32_t& left, std::uint32_t& right) {
    for (int i = 0; i < kRounds; ++i) {
        left ^= p(i);
        right ^= F(sbox, left);
        std::swap(left, right);
    }
    std::swap(left, right);
    right ^= p(kRounds);
    left ^= p(kRounds + 1);
}

void BlowfishInit(const std::uint8_t* key, std::uint8_t* schedule) {
    State state;
    std::size_t position = 0;
    for (int i = 0; i < kSubkeys; ++i) {
        std::uint32_t word = 0;
        for (int b = 0; b < 4; ++b, position = (position + 1) % kKeyBytes) {
            word = (word << 8) | key[position];
        }
        state.p[i] = kBlowfishInitialSubkeys[i] ^ word;
    }
    for (int box = 0; box < 4; ++box) {
        for (int i = 0; i < 256; ++i) {
            state.s[box][i] = kBlowfishInitialSboxes[box][i];
        }
    }
    auto p = [&](int i) { return state.p[i]; };
    auto sbox = [&](int box, std::uint32_t index) { return state.s[box][index]; };
    // Each subkey and S-box entry in turn is replaced by the encryption of the previous output.
    std::uint32_t left = 0;
    std::uint32_t right = 0;
    for (int i = 0; i < kSubkeys; i += 2) {
        EncryptHalves(p, sbox, left, right);
        state.p[i] = left;
        state.p[i + 1] = right;
    }
    for (int box = 0; box < 4; ++box) {
        for (int i = 0; i < 256; i += 2) {
            EncryptHalves(p, sbox, left, right);
            state.s[box][i] = left;
            state.s[box][i + 1] = right;
        }
    }
    WriteWords(schedule, state.p, kSubkeys);
    WriteWords(schedule + kSboxOffset, &state.s[0][0], 4 * 256);
    platform::SecureWipe(&state, sizeof(state));
}

template <bool Decrypt>
void BlowfishBlocks(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    auto p = [&](int i) { return ReadWord(schedule, Decrypt ? kSubkeys - 1 - i : i); };
    auto sbox = [&](int box, std::uint32_t index) {
        return ReadWord(schedule + kSboxOffset, 256 * box + index);
    };
    for (std::size_t b = 0; b < count; ++b, blocks += 8) {
        std::uint32_t left = LoadLittle<std::uint32_t>(blocks);
        std::uint32_t right = LoadLittle<std::uint32_t>(blocks + 4);
        EncryptHalves(p, sbox, left, right);
        StoreLittle(blocks, left);
        StoreLittle(blocks + 4, right);
    }
}

}  // namespace

const BlockCipherOps kBlowfishOps = {
    BlowfishInit, BlowfishBlocks<false>, BlowfishBlocks<true>, kScheduleSpace, nullptr, nullptr};

}  // namespace crypto::detail
