// RC6-32/20/16: 32-bit words, 20 rounds, a 16-byte key; little-endian words as in the
// published reference.

#include <bit>

#include "Common/Common/Endian.h"
#include "crypto/detail/BlockCiphers.h"
#include "crypto/detail/RcKeyExpansion.h"
#include "crypto/detail/ScheduleWords.h"

namespace crypto::detail {
namespace {

using Zelmarik::LoadLittle;
using Zelmarik::StoreLittle;

constexpr int kRounds = 20;
constexpr int kTableWords = 2 * kRounds + 4;

void Rc6Init(const std::uint8_t* key, std::uint8_t* schedule) {
    ExpandRcKey<kTableWords>(key, schedule);
}

std::uint32_t Quadratic(std::uint32_t x) {
    return std::rotl(x * (2 * x + 1), 5);
}

int Amount(std::uint32_t x) {
    return static_cast<int>(x & 31);
}

void Rc6Encrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    for (std::size_t n = 0; n < count; ++n, blocks += 16) {
        std::uint32_t a = LoadLittle<std::uint32_t>(blocks);
        std::uint32_t b = LoadLittle<std::uint32_t>(blocks + 4) + ReadWord(schedule, 0);
        std::uint32_t c = LoadLittle<std::uint32_t>(blocks + 8);
        std::uint32_t d = LoadLittle<std::uint32_t>(blocks + 12) + ReadWord(schedule, 1);
        for (int i = 1; i <= kRounds; ++i) {
            const std::uint32_t t = Quadratic(b);
            const std::uint32_t u = Quadratic(d);
            a = std::rotl(a ^ t, Amount(u)) + ReadWord(schedule, 2 * i);
            c = std::rotl(c ^ u, Amount(t)) + ReadWord(schedule, 2 * i + 1);
            const std::uint32_t first = a;
            a = b;
            b = c;
            c = d;
            d = first;
        }
        StoreLittle(blocks, a + ReadWord(schedule, 2 * kRounds + 2));
        StoreLittle(blocks + 4, b);
        StoreLittle(blocks + 8, c + ReadWord(schedule, 2 * kRounds + 3));
        StoreLittle(blocks + 12, d);
    }
}

void Rc6Decrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    for (std::size_t n = 0; n < count; ++n, blocks += 16) {
        std::uint32_t a = LoadLittle<std::uint32_t>(blocks) - ReadWord(schedule, 2 * kRounds + 2);
        std::uint32_t b = LoadLittle<std::uint32_t>(blocks + 4);
        std::uint32_t c =
            LoadLittle<std::uint32_t>(blocks + 8) - ReadWord(schedule, 2 * kRounds + 3);
        std::uint32_t d = LoadLittle<std::uint32_t>(blocks + 12);
        for (int i = kRounds; i >= 1; --i) {
            const std::uint32_t last = d;
            d = c;
            c = b;
            b = a;
            a = last;
            const std::uint32_t u = Quadratic(d);
            const std::uint32_t t = Quadratic(b);
            c = std::rotr(c - ReadWord(schedule, 2 * i + 1), Amount(t)) ^ u;
            a = std::rotr(a - ReadWord(schedule, 2 * i), Amount(u)) ^ t;
        }
        StoreLittle(blocks, a);
        StoreLittle(blocks + 4, b - ReadWord(schedule, 0));
        StoreLittle(blocks + 8, c);
        StoreLittle(blocks + 12, d - ReadWord(schedule, 1));
    }
}

}  // namespace

const BlockCipherOps kRc6Ops = {Rc6Init, Rc6Encrypt, Rc6Decrypt, 4 * kTableWords, nullptr, nullptr};

}  // namespace crypto::detail
