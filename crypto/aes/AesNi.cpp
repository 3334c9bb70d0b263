// AES-256 with the AES-NI instructions: no table lookups, and up to eight blocks in flight so
// that independent blocks fill the pipeline of the AES unit. The only file built with -maes.

#include <immintrin.h>

#include <cstring>

#include "crypto/detail/AesLayout.h"
#include "platform/SecureMemory.h"

namespace crypto::detail {
namespace {

constexpr std::size_t kLanes = 8;

__m128i Load(const std::uint8_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

void Store(std::uint8_t* p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

// Round keys are stored as column words in the machine's order; AES-NI wants the bytes in
// the order of the state. Reversing each 32-bit word converts either way.
__m128i SwapWordBytes(__m128i v) {
    const __m128i reverseWords = _mm_set_epi8(12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3);
    return _mm_shuffle_epi8(v, reverseWords);
}

// XOR of a word into all words above it: the running sum of the key expansion.
__m128i SpreadWords(__m128i v) {
    v = _mm_xor_si128(v, _mm_slli_si128(v, 4));
    v = _mm_xor_si128(v, _mm_slli_si128(v, 4));
    return _mm_xor_si128(v, _mm_slli_si128(v, 4));
}

// The even round key: RotWord, SubWord and the round constant on the last word of `odd`.
template <int RoundConstant>
__m128i NextEvenKey(__m128i even, __m128i odd) {
    const __m128i assist = _mm_aeskeygenassist_si128(odd, RoundConstant);
    return _mm_xor_si128(SpreadWords(even), _mm_shuffle_epi32(assist, 0xFF));
}

// The odd round key: SubWord alone on the last word of `even`.
__m128i NextOddKey(__m128i odd, __m128i even) {
    const __m128i assist = _mm_aeskeygenassist_si128(even, 0);
    return _mm_xor_si128(SpreadWords(odd), _mm_shuffle_epi32(assist, 0xAA));
}

// Wiped when they go: a worker thread's stack outlives its last call, and the outer round keys
// are the cipher key itself.
struct RoundKeys {
    RoundKeys() = default;
    RoundKeys(const RoundKeys&) = delete;
    RoundKeys& operator=(const RoundKeys&) = delete;
    ~RoundKeys() { platform::SecureWipe(key, sizeof(key)); }

    __m128i key[kAesRounds + 1];
};

void LoadKeys(const std::uint8_t* keys, RoundKeys& loaded) {
    for (int round = 0; round <= kAesRounds; ++round) {
        loaded.key[round] = SwapWordBytes(Load(keys + 16 * round));
    }
}

template <bool Decrypt>
__m128i Round(__m128i state, __m128i key) {
    return Decrypt ? _mm_aesdec_si128(state, key) : _mm_aesenc_si128(state, key);
}

template <bool Decrypt>
__m128i LastRound(__m128i state, __m128i key) {
    return Decrypt ? _mm_aesdeclast_si128(state, key) : _mm_aesenclast_si128(state, key);
}

template <bool Decrypt>
void TransformBlocks(const std::uint8_t* keyWords, std::uint8_t* blocks, std::size_t count) {
    RoundKeys keys;
    LoadKeys(keyWords, keys);
    for (; count >= kLanes; count -= kLanes, blocks += 16 * kLanes) {
        __m128i state[kLanes];
#pragma GCC unroll 8
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            state[lane] = _mm_xor_si128(Load(blocks + 16 * lane), keys.key[0]);
        }
#pragma GCC unroll 13
        for (int round = 1; round < kAesRounds; ++round) {
#pragma GCC unroll 8
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                state[lane] = Round<Decrypt>(state[lane], keys.key[round]);
            }
        }
#pragma GCC unroll 8
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            Store(blocks + 16 * lane, LastRound<Decrypt>(state[lane], keys.key[kAesRounds]));
        }
    }
    for (; count > 0; --count, blocks += 16) {
        __m128i state = _mm_xor_si128(Load(blocks), keys.key[0]);
#pragma GCC unroll 13
        for (int round = 1; round < kAesRounds; ++round) {
            state = Round<Decrypt>(state, keys.key[round]);
        }
        Store(blocks, LastRound<Decrypt>(state, keys.key[kAesRounds]));
    }
}

__m128i LoadFourBytes(const std::uint8_t* p) {
    std::int32_t word;
    std::memcpy(&word, p, sizeof(word));
    return _mm_cvtsi32_si128(word);
}

// What the chunk chain keeps in registers in either direction: the round keys, and the
// whitening and chain bytes in the low four bytes of a register.
struct ChainRegisters {
    ChainRegisters(const std::uint8_t* keyWords, const std::uint8_t* chain,
                   const std::uint8_t* whitening)
        : white(LoadFourBytes(whitening)), chained(LoadFourBytes(chain)) {
        LoadKeys(keyWords, keys);
    }

    void SaveChain(std::uint8_t* chain) const {
        const std::int32_t word = _mm_cvtsi128_si32(chained);
        std::memcpy(chain, &word, sizeof(word));
    }

    RoundKeys keys;
    __m128i mask = _mm_cvtsi32_si128(-1);
    __m128i white;
    __m128i chained;
};

}  // namespace

void AesNiExpandKey(const std::uint8_t* key, std::uint8_t* schedule) {
    __m128i k[kAesRounds + 1];
    k[0] = Load(key);
    k[1] = Load(key + 16);
    k[2] = NextEvenKey<0x01>(k[0], k[1]);
    k[3] = NextOddKey(k[1], k[2]);
    k[4] = NextEvenKey<0x02>(k[2], k[3]);
    k[5] = NextOddKey(k[3], k[4]);
    k[6] = NextEvenKey<0x04>(k[4], k[5]);
    k[7] = NextOddKey(k[5], k[6]);
    k[8] = NextEvenKey<0x08>(k[6], k[7]);
    k[9] = NextOddKey(k[7], k[8]);
    k[10] = NextEvenKey<0x10>(k[8], k[9]);
    k[11] = NextOddKey(k[9], k[10]);
    k[12] = NextEvenKey<0x20>(k[10], k[11]);
    k[13] = NextOddKey(k[11], k[12]);
    k[14] = NextEvenKey<0x40>(k[12], k[13]);

    std::uint8_t* encryptKeys = schedule + kAesEncryptKeysOffset;
    std::uint8_t* decryptKeys = schedule + kAesDecryptKeysOffset;
    for (int round = 0; round <= kAesRounds; ++round) {
        Store(encryptKeys + 16 * round, SwapWordBytes(k[round]));
        const __m128i mirrored = k[kAesRounds - round];
        const bool outer = round == 0 || round == kAesRounds;
        Store(decryptKeys + 16 * round,
              SwapWordBytes(outer ? mirrored : _mm_aesimc_si128(mirrored)));
    }
    platform::SecureWipe(k, sizeof(k));
}

void AesNiEncryptBlocks(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    TransformBlocks<false>(schedule + kAesEncryptKeysOffset, blocks, count);
}

void AesNiDecryptBlocks(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    TransformBlocks<true>(schedule + kAesDecryptKeysOffset, blocks, count);
}

// The chain bytes live in the low four bytes of a register; the first round key is folded
// into each block before the chain value of the block before is known, so that the serial
// path is the AES rounds plus one AND and one XOR.
void AesNiChainEncrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count,
                       std::uint8_t* chain, const std::uint8_t* whitening) {
    ChainRegisters r(schedule + kAesEncryptKeysOffset, chain, whitening);
    for (; count > 0; --count, blocks += 16) {
        __m128i state = _mm_xor_si128(r.chained, _mm_xor_si128(Load(blocks), r.keys.key[0]));
#pragma GCC unroll 13
        for (int round = 1; round < kAesRounds; ++round) {
            state = _mm_aesenc_si128(state, r.keys.key[round]);
        }
        state = _mm_aesenclast_si128(state, r.keys.key[kAesRounds]);
        r.chained = _mm_and_si128(state, r.mask);
        Store(blocks, _mm_xor_si128(state, r.white));
    }
    r.SaveChain(chain);
}

// Each block's chain bytes for the next are its own stored bytes without the whitening, so all
// blocks decrypt independently; only the four chained bytes of each are XORed afterwards.
void AesNiChainDecrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count,
                       std::uint8_t* chain, const std::uint8_t* whitening) {
    ChainRegisters r(schedule + kAesDecryptKeysOffset, chain, whitening);
    const RoundKeys& keys = r.keys;
    for (; count >= kLanes; count -= kLanes, blocks += 16 * kLanes) {
        __m128i state[kLanes];
        __m128i before[kLanes];
#pragma GCC unroll 8
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const __m128i stored = _mm_xor_si128(Load(blocks + 16 * lane), r.white);
            before[lane] = r.chained;
            r.chained = _mm_and_si128(stored, r.mask);
            state[lane] = _mm_xor_si128(stored, keys.key[0]);
        }
#pragma GCC unroll 13
        for (int round = 1; round < kAesRounds; ++round) {
#pragma GCC unroll 8
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                state[lane] = _mm_aesdec_si128(state[lane], keys.key[round]);
            }
        }
#pragma GCC unroll 8
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const __m128i plain = _mm_aesdeclast_si128(state[lane], keys.key[kAesRounds]);
            Store(blocks + 16 * lane, _mm_xor_si128(plain, before[lane]));
        }
    }
    for (; count > 0; --count, blocks += 16) {
        const __m128i stored = _mm_xor_si128(Load(blocks), r.white);
        __m128i state = _mm_xor_si128(stored, keys.key[0]);
#pragma GCC unroll 13
        for (int round = 1; round < kAesRounds; ++round) {
            state = _mm_aesdec_si128(state, keys.key[round]);
        }
        const __m128i plain = _mm_aesdeclast_si128(state, keys.key[kAesRounds]);
        Store(blocks, _mm_xor_si128(plain, r.chained));
        r.chained = _mm_and_si128(stored, r.mask);
    }
    r.SaveChain(chain);
}

}  // namespace crypto::detail
