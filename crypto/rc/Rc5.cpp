// RC5-32/12/16: 32-bit words, 12 rounds, a 16-byte key; little-endian words as in the
// published reference.

#include <algorithm>
#include <bit>

#include "Common/Common/Endian.h"
#include "crypto/detail/BlockCiphers.h"
#include "crypto/detail/RcKeyExpansion.h"
#include "crypto/detail/ScheduleWords.h"

namespace crypto::detail {
namespace {

using Zelmarik::LoadLittle;
using Zelmarik::StoreLittle;

constexpr int kRounds = 12;
constexpr int kTableWords = 2 * kRounds + 2;

void Rc5Init(const std::uint8_t* key, std::uint8_t* schedule) {
    ExpandRcKey<kTableWords>(key, schedule);
}

int Amount(std::uint32_t x) {
    return static_cast<int>(x & 31);
}

void Rc5Encrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    for (std::size_t b = 0; b < count; ++b, blocks += 8) {
        std::uint32_t a = LoadLittle<std::uint32_t>(blocks) + ReadWord(schedule, 0);
        std::uint32_t c = LoadLittle<std::uint32_t>(blocks + 4) + ReadWord(schedule, 1);
        for (int i = 1; i <= kRounds; ++i) {
            a = std::rotl(a ^ c, Amount(c)) + ReadWord(schedule, 2 * i);
            c = std::rotl(c ^ a, Amount(a)) + ReadWord(schedule, 2 * i + 1);
        }
        StoreLittle(blocks, a);
        StoreLittle(blocks + 4, c);
    }
}

void Rc5Decrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    for (std::size_t b = 0; b < count; ++b, blocks += 8) {
        std::uint32_t a = LoadLittle<std::uint32_t>(blocks);
        std::uint32_t c = LoadLittle<std::uint32_t>(blocks + 4);
        for (int i = kRounds; i >= 1; --i) {
            c = std::rotr(c - ReadWord(schedule, 2 * i + 1), Amount(a)) ^ a;
            a = std::rotr(a - ReadWord(schedule, 2 * i), Amount(c)) ^ c;
        }
        StoreLittle(blocks, a - ReadWord(schedule, 0));
        StoreLittle(blocks + 4, c - ReadWord(schedule, 1));
    }
}

}  // namespace

const BlockCipherOps kRc5Ops = {Rc5Init, Rc5Encrypt, Rc5Decrypt, 4 * kTableWords, nullptr, nullptr};

}  // namespace crypto::detail
