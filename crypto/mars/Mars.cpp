// MARS with a 128-bit key and the 40-word key expansion of the first submission. Key and block
// are 32-bit little-endian words; the schedule is the 40 expanded key words K[0..39].

#include <algorithm>
#include <bit>
#include <utility>

#include "Common/Common/Endian.h"
#include "crypto/detail/BlockCiphers.h"
#include "crypto/detail/MarsSbox.h"
#include "crypto/detail/ScheduleWords.h"
#include "platform/SecureMemory.h"

namespace crypto::detail {
namespace {

using Zelmarik::LoadLittle;
using Zelmarik::StoreLittle;

constexpr int kKeyWords = 4;
constexpr int kExpandedWords = 40;
constexpr int kMixingRounds = 8;
constexpr int kCoreRounds = 16;
constexpr std::size_t kFixupTable = 265;  // S[265..268], the patterns of the key fix-up

std::uint32_t S(std::uint32_t index) {
    return kMarsSbox[index & 511];
}

std::uint32_t S0(std::uint32_t index) {
    return kMarsSbox[index & 255];
}

std::uint32_t S1(std::uint32_t index) {
    return kMarsSbox[256 + (index & 255)];
}

// Bits of w that lie inside (not at either end of) a run of ten or more equal bits, limited to
// positions 2 to 30.
std::uint32_t LongRunMask(std::uint32_t w) {
    std::uint32_t mask = 0;
    int runStart = 0;
    for (int bit = 1; bit <= 32; ++bit) {
        if (bit < 32 && ((w >> bit) & 1) == ((w >> runStart) & 1)) {
            continue;
        }
        if (bit - runStart >= 10) {
            for (int inner = std::max(runStart + 1, 2); inner <= std::min(bit - 2, 30); ++inner) {
                mask |= 1u << inner;
            }
        }
        runStart = bit;
    }
    return mask;
}

void MarsInit(const std::uint8_t* key, std::uint8_t* schedule) {
    std::uint32_t k[kKeyWords];
    for (int i = 0; i < kKeyWords; ++i) {
        k[i] = LoadLittle<std::uint32_t>(key + 4 * i);
    }
    // t[7 + i] is T[i]; T[-7..-1] start as the first seven S-box words.
    constexpr int kBack = 7;
    std::uint32_t t[kBack + kExpandedWords];
    for (int i = 0; i < kBack; ++i) {
        t[i] = S(static_cast<std::uint32_t>(i));
    }
    std::uint32_t* T = t + kBack;
    for (int i = 0; i < kExpandedWords - 1; ++i) {
        T[i] = std::rotl(T[i - 7] ^ T[i - 2], 3) ^ k[i % kKeyWords] ^ static_cast<std::uint32_t>(i);
    }
    T[kExpandedWords - 1] = kKeyWords;
    for (int stir = 0; stir < 7; ++stir) {
        for (int i = 1; i < kExpandedWords; ++i) {
            T[i] = std::rotl(T[i] + S(T[i - 1]), 9);
        }
        T[0] = std::rotl(T[0] + S(T[kExpandedWords - 1]), 9);
    }
    std::uint32_t K[kExpandedWords];
    for (int i = 0; i < kExpandedWords; ++i) {
        K[(7 * i) % kExpandedWords] = T[i];
    }
    // The multiplication keys: low bits set, long runs of equal bits broken up.
    for (int i = 5; i <= 35; i += 2) {
        const std::uint32_t pattern = kMarsSbox[kFixupTable + (K[i] & 3)];
        const std::uint32_t w = K[i] | 3;
        const std::uint32_t p = std::rotl(pattern, static_cast<int>(K[i + 3] & 31));
        K[i] = w ^ (p & LongRunMask(w));
    }
    WriteWords(schedule, K, kExpandedWords);
    platform::SecureWipe(k, sizeof(k));
    platform::SecureWipe(t, sizeof(t));
    platform::SecureWipe(K, sizeof(K));
}

struct Words {
    std::uint32_t d[4];

    // Turns the words left by one: (D0, D1, D2, D3) becomes (D1, D2, D3, D0).
    void RotateLeft() {
        const std::uint32_t first = d[0];
        d[0] = d[1];
        d[1] = d[2];
        d[2] = d[3];
        d[3] = first;
    }
    void RotateRight() {
        const std::uint32_t last = d[3];
        d[3] = d[2];
        d[2] = d[1];
        d[1] = d[0];
        d[0] = last;
    }
};

struct EOutput {
    std::uint32_t l, m, r;
};

EOutput E(std::uint32_t in, std::uint32_t key1, std::uint32_t key2) {
    std::uint32_t m = in + key1;
    std::uint32_t r = std::rotl(in, 13) * key2;
    std::uint32_t l = S(m);
    r = std::rotl(r, 5);
    m = std::rotl(m, static_cast<int>(r & 31));
    l ^= r;
    r = std::rotl(r, 5);
    l ^= r;
    l = std::rotl(l, static_cast<int>(r & 31));
    return {l, m, r};
}

Words Load(const std::uint8_t* block) {
    Words w;
    for (int i = 0; i < 4; ++i) {
        w.d[i] = LoadLittle<std::uint32_t>(block + 4 * i);
    }
    return w;
}

void Store(std::uint8_t* block, const Words& w) {
    for (int i = 0; i < 4; ++i) {
        StoreLittle(block + 4 * i, w.d[i]);
    }
}

void MarsEncrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    for (std::size_t n = 0; n < count; ++n, blocks += 16) {
        Words w = Load(blocks);
        std::uint32_t* d = w.d;
        for (int i = 0; i < 4; ++i) {
            d[i] += ReadWord(schedule, i);
        }
        for (int i = 0; i < kMixingRounds; ++i) {
            d[1] ^= S0(d[0]);
            d[1] += S1(d[0] >> 8);
            d[2] += S0(d[0] >> 16);
            d[3] ^= S1(d[0] >> 24);
            d[0] = std::rotr(d[0], 24);
            if (i == 0 || i == 4) {
                d[0] += d[3];
            } else if (i == 1 || i == 5) {
                d[0] += d[1];
            }
            w.RotateLeft();
        }
        for (int i = 0; i < kCoreRounds; ++i) {
            const EOutput e = E(d[0], ReadWord(schedule, 2 * i + 4), ReadWord(schedule, 2 * i + 5));
            d[0] = std::rotl(d[0], 13);
            d[2] += e.m;
            if (i < kCoreRounds / 2) {
                d[1] += e.l;
                d[3] ^= e.r;
            } else {
                d[3] += e.l;
                d[1] ^= e.r;
            }
            w.RotateLeft();
        }
        for (int i = 0; i < kMixingRounds; ++i) {
            if (i == 2 || i == 6) {
                d[0] -= d[3];
            } else if (i == 3 || i == 7) {
                d[0] -= d[1];
            }
            d[1] ^= S1(d[0]);
            d[2] -= S0(d[0] >> 24);
            d[3] -= S1(d[0] >> 16);
            d[3] ^= S0(d[0] >> 8);
            d[0] = std::rotl(d[0], 24);
            w.RotateLeft();
        }
        for (int i = 0; i < 4; ++i) {
            d[i] -= ReadWord(schedule, 36 + i);
        }
        Store(blocks, w);
    }
}

void MarsDecrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    for (std::size_t n = 0; n < count; ++n, blocks += 16) {
        Words w = Load(blocks);
        std::uint32_t* d = w.d;
        for (int i = 0; i < 4; ++i) {
            d[i] += ReadWord(schedule, 36 + i);
        }
        for (int i = kMixingRounds - 1; i >= 0; --i) {
            w.RotateRight();
            d[0] = std::rotr(d[0], 24);
            d[3] ^= S0(d[0] >> 8);
            d[3] += S1(d[0] >> 16);
            d[2] += S0(d[0] >> 24);
            d[1] ^= S1(d[0]);
            if (i == 2 || i == 6) {
                d[0] += d[3];
            } else if (i == 3 || i == 7) {
                d[0] += d[1];
            }
        }
        for (int i = kCoreRounds - 1; i >= 0; --i) {
            w.RotateRight();
            d[0] = std::rotr(d[0], 13);
            const EOutput e = E(d[0], ReadWord(schedule, 2 * i + 4), ReadWord(schedule, 2 * i + 5));
            d[2] -= e.m;
            if (i < kCoreRounds / 2) {
                d[1] -= e.l;
                d[3] ^= e.r;
            } else {
                d[3] -= e.l;
                d[1] ^= e.r;
            }
        }
        for (int i = kMixingRounds - 1; i >= 0; --i) {
            w.RotateRight();
            if (i == 0 || i == 4) {
                d[0] -= d[3];
            } else if (i == 1 || i == 5) {
                d[0] -= d[1];
            }
            d[0] = std::rotl(d[0], 24);
            d[3] ^= S1(d[0] >> 24);
            d[2] -= S0(d[0] >> 16);
            d[1] -= S1(d[0] >> 8);
            d[1] ^= S0(d[0]);
        }
        for (int i = 0; i < 4; ++i) {
            d[i] -= ReadWord(schedule, i);
        }
        Store(blocks, w);
    }
}

}  // namespace

const BlockCipherOps kMarsOps = {MarsInit,           MarsEncrypt, MarsDecrypt,
                                 4 * kExpandedWords, nullptr,     nullptr};

}  // namespace crypto::detail
