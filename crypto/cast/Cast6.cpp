// CAST-256 (RFC 2612) with a 128-bit key, padded with zero words as the RFC pads it; big-endian
// words for key and block. 48 rounds as six forward and six reverse quad-rounds.

#include "Common/Common/Endian.h"
#include "crypto/detail/BlockCiphers.h"
#include "crypto/detail/CastFunctions.h"
#include "crypto/detail/ScheduleWords.h"
#include "platform/SecureMemory.h"

namespace crypto::detail {
namespace {

using Zelmarik::LoadBig;
using Zelmarik::StoreBig;

constexpr int kQuadRounds = 12;
constexpr int kKeyBytesUsed = 16;
constexpr int kMaskingKeys = 0;                 // Km of quad-round i at 4i
constexpr int kRotationKeys = 4 * kQuadRounds;  // Kr of quad-round i at 48 + 4i

// One forward octave of the key schedule on kappa = A..H with its masking and rotation keys.
void Octave(std::uint32_t kappa[8], const std::uint32_t tm[8], const std::uint32_t tr[8]) {
    enum { A, B, C, D, E, F, G, H };
    kappa[G] ^= CastF1(kappa[H], tm[0], tr[0]);
    kappa[F] ^= CastF2(kappa[G], tm[1], tr[1]);
    kappa[E] ^= CastF3(kappa[F], tm[2], tr[2]);
    kappa[D] ^= CastF1(kappa[E], tm[3], tr[3]);
    kappa[C] ^= CastF2(kappa[D], tm[4], tr[4]);
    kappa[B] ^= CastF3(kappa[C], tm[5], tr[5]);
    kappa[A] ^= CastF1(kappa[B], tm[6], tr[6]);
    kappa[H] ^= CastF2(kappa[A], tm[7], tr[7]);
}

void Cast6Init(const std::uint8_t* key, std::uint8_t* schedule) {
    std::uint32_t kappa[8] = {};
    for (int i = 0; i < kKeyBytesUsed / 4; ++i) {
        kappa[i] = LoadBig<std::uint32_t>(key + 4 * i);
    }
    std::uint32_t cm = 0x5A827999;
    constexpr std::uint32_t kMm = 0x6ED9EBA1;
    std::uint32_t cr = 19;
    constexpr std::uint32_t kMr = 17;
    for (int i = 0; i < kQuadRounds; ++i) {
        for (int half = 0; half < 2; ++half) {
            std::uint32_t tm[8];
            std::uint32_t tr[8];
            for (int j = 0; j < 8; ++j) {
                tm[j] = cm;
                cm += kMm;
                tr[j] = cr;
                cr = (cr + kMr) & 31;
            }
            Octave(kappa, tm, tr);
        }
        // Kr from A, C, E, G; Km from H, F, D, B.
        for (int j = 0; j < 4; ++j) {
            WriteWord(schedule, kRotationKeys + 4 * i + j, kappa[2 * j] & 31);
            WriteWord(schedule, kMaskingKeys + 4 * i + j, kappa[7 - 2 * j]);
        }
    }
    platform::SecureWipe(kappa, sizeof(kappa));
}

struct QuadKeys {
    std::uint32_t km[4];
    std::uint32_t kr[4];
};

QuadKeys KeysOf(const std::uint8_t* schedule, int quad) {
    QuadKeys keys;
    for (int j = 0; j < 4; ++j) {
        keys.km[j] = ReadWord(schedule, kMaskingKeys + 4 * quad + j);
        keys.kr[j] = ReadWord(schedule, kRotationKeys + 4 * quad + j);
    }
    return keys;
}

// beta = A, B, C, D.
void Forward(std::uint32_t beta[4], const QuadKeys& k) {
    beta[2] ^= CastF1(beta[3], k.km[0], k.kr[0]);
    beta[1] ^= CastF2(beta[2], k.km[1], k.kr[1]);
    beta[0] ^= CastF3(beta[1], k.km[2], k.kr[2]);
    beta[3] ^= CastF1(beta[0], k.km[3], k.kr[3]);
}

void Reverse(std::uint32_t beta[4], const QuadKeys& k) {
    beta[3] ^= CastF1(beta[0], k.km[3], k.kr[3]);
    beta[0] ^= CastF3(beta[1], k.km[2], k.kr[2]);
    beta[1] ^= CastF2(beta[2], k.km[1], k.kr[1]);
    beta[2] ^= CastF1(beta[3], k.km[0], k.kr[0]);
}

template <bool Decrypt>
void Cast6Blocks(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    for (std::size_t b = 0; b < count; ++b, blocks += 16) {
        std::uint32_t beta[4];
        for (int i = 0; i < 4; ++i) {
            beta[i] = LoadBig<std::uint32_t>(blocks + 4 * i);
        }
        for (int step = 0; step < kQuadRounds; ++step) {
            const int quad = Decrypt ? kQuadRounds - 1 - step : step;
            // Forward and reverse quad-rounds undo each other, so decryption too runs six
            // forward quad-rounds first, on the keys in reverse order.
            if (step < kQuadRounds / 2) {
                Forward(beta, KeysOf(schedule, quad));
            } else {
                Reverse(beta, KeysOf(schedule, quad));
            }
        }
        for (int i = 0; i < 4; ++i) {
            StoreBig(blocks + 4 * i, beta[i]);
        }
    }
}

}  // namespace

const BlockCipherOps kCast6Ops = {
    Cast6Init, Cast6Blocks<false>, Cast6Blocks<true>, 4 * 2 * 4 * kQuadRounds, nullptr, nullptr};

}  // namespace crypto::detail
