// AES-256 (FIPS 197): the table-driven form with the equivalent inverse cipher, and the
// dispatch to AES-NI when the processor has it. Both forms share one schedule layout.

#include "Common/Common/Endian.h"
#include "crypto/CpuFeatures.h"
#include "crypto/detail/AesLayout.h"
#include "crypto/detail/AesTables.h"
#include "crypto/detail/BlockCiphers.h"
#include "crypto/detail/ScheduleWords.h"
#include "platform/SecureMemory.h"

namespace crypto::detail {
namespace {

using Zelmarik::LoadBig;
using Zelmarik::StoreBig;

constexpr int kKeyWords = 8;
constexpr int kScheduleWords = 4 * (kAesRounds + 1);

std::uint32_t SubWord(std::uint32_t w) {
    return Column(kAesSbox[w >> 24], kAesSbox[(w >> 16) & 0xFF], kAesSbox[(w >> 8) & 0xFF],
                  kAesSbox[w & 0xFF]);
}

std::uint32_t InvMixColumn(std::uint32_t w) {
    const std::uint8_t a0 = w >> 24, a1 = (w >> 16) & 0xFF, a2 = (w >> 8) & 0xFF, a3 = w & 0xFF;
    auto row = [&](int m0, int m1, int m2, int m3) {
        return static_cast<std::uint8_t>(GfMultiply(a0, m0) ^ GfMultiply(a1, m1) ^
                                         GfMultiply(a2, m2) ^ GfMultiply(a3, m3));
    };
    return Column(row(14, 11, 13, 9), row(9, 14, 11, 13), row(13, 9, 14, 11), row(11, 13, 9, 14));
}

void PortableExpandKey(const std::uint8_t* key, std::uint8_t* schedule) {
    std::uint32_t w[kScheduleWords];
    for (int i = 0; i < kKeyWords; ++i) {
        w[i] = LoadBig<std::uint32_t>(key + 4 * i);
    }
    std::uint32_t roundConstant = 1;
    for (int i = kKeyWords; i < kScheduleWords; ++i) {
        std::uint32_t temp = w[i - 1];
        if (i % kKeyWords == 0) {
            temp = SubWord(std::rotl(temp, 8)) ^ (roundConstant << 24);
            roundConstant = GfDouble(static_cast<std::uint8_t>(roundConstant));
        } else if (i % kKeyWords == 4) {
            temp = SubWord(temp);
        }
        w[i] = w[i - kKeyWords] ^ temp;
    }
    std::uint8_t* encryptKeys = schedule + kAesEncryptKeysOffset;
    std::uint8_t* decryptKeys = schedule + kAesDecryptKeysOffset;
    for (int round = 0; round <= kAesRounds; ++round) {
        const int mirrored = kAesRounds - round;
        for (int c = 0; c < 4; ++c) {
            const std::uint32_t word = w[4 * mirrored + c];
            WriteWord(encryptKeys, 4 * mirrored + c, word);
            const bool outer = round == 0 || round == kAesRounds;
            WriteWord(decryptKeys, 4 * round + c, outer ? word : InvMixColumn(word));
        }
    }
    platform::SecureWipe(w, sizeof(w));
}

std::uint32_t RoundKey(const std::uint8_t* keys, int round, int column) {
    return ReadWord(keys, 4 * round + column);
}

void TableEncryptBlock(const std::uint8_t* keys, std::uint8_t* block) {
    const auto& te = kAesEncryptTables;
    std::uint32_t s0 = LoadBig<std::uint32_t>(block) ^ RoundKey(keys, 0, 0);
    std::uint32_t s1 = LoadBig<std::uint32_t>(block + 4) ^ RoundKey(keys, 0, 1);
    std::uint32_t s2 = LoadBig<std::uint32_t>(block + 8) ^ RoundKey(keys, 0, 2);
    std::uint32_t s3 = LoadBig<std::uint32_t>(block + 12) ^ RoundKey(keys, 0, 3);
    for (int round = 1; round < kAesRounds; ++round) {
        const std::uint32_t t0 = te[0][s0 >> 24] ^ te[1][(s1 >> 16) & 0xFF] ^
                                 te[2][(s2 >> 8) & 0xFF] ^ te[3][s3 & 0xFF] ^
                                 RoundKey(keys, round, 0);
        const std::uint32_t t1 = te[0][s1 >> 24] ^ te[1][(s2 >> 16) & 0xFF] ^
                                 te[2][(s3 >> 8) & 0xFF] ^ te[3][s0 & 0xFF] ^
                                 RoundKey(keys, round, 1);
        const std::uint32_t t2 = te[0][s2 >> 24] ^ te[1][(s3 >> 16) & 0xFF] ^
                                 te[2][(s0 >> 8) & 0xFF] ^ te[3][s1 & 0xFF] ^
                                 RoundKey(keys, round, 2);
        const std::uint32_t t3 = te[0][s3 >> 24] ^ te[1][(s0 >> 16) & 0xFF] ^
                                 te[2][(s1 >> 8) & 0xFF] ^ te[3][s2 & 0xFF] ^
                                 RoundKey(keys, round, 3);
        s0 = t0;
        s1 = t1;
        s2 = t2;
        s3 = t3;
    }
    const auto& s = kAesSbox;
    auto last = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d, int col) {
        return Column(s[a >> 24], s[(b >> 16) & 0xFF], s[(c >> 8) & 0xFF], s[d & 0xFF]) ^
               RoundKey(keys, kAesRounds, col);
    };
    StoreBig(block, last(s0, s1, s2, s3, 0));
    StoreBig(block + 4, last(s1, s2, s3, s0, 1));
    StoreBig(block + 8, last(s2, s3, s0, s1, 2));
    StoreBig(block + 12, last(s3, s0, s1, s2, 3));
}

// The equivalent inverse cipher: the same round structure as encryption, with the inverse
// tables and the round keys passed through InvMixColumns at key setup.
void TableDecryptBlock(const std::uint8_t* keys, std::uint8_t* block) {
    const auto& td = kAesDecryptTables;
    std::uint32_t s0 = LoadBig<std::uint32_t>(block) ^ RoundKey(keys, 0, 0);
    std::uint32_t s1 = LoadBig<std::uint32_t>(block + 4) ^ RoundKey(keys, 0, 1);
    std::uint32_t s2 = LoadBig<std::uint32_t>(block + 8) ^ RoundKey(keys, 0, 2);
    std::uint32_t s3 = LoadBig<std::uint32_t>(block + 12) ^ RoundKey(keys, 0, 3);
    for (int round = 1; round < kAesRounds; ++round) {
        const std::uint32_t t0 = td[0][s0 >> 24] ^ td[1][(s3 >> 16) & 0xFF] ^
                                 td[2][(s2 >> 8) & 0xFF] ^ td[3][s1 & 0xFF] ^
                                 RoundKey(keys, round, 0);
        const std::uint32_t t1 = td[0][s1 >> 24] ^ td[1][(s0 >> 16) & 0xFF] ^
                                 td[2][(s3 >> 8) & 0xFF] ^ td[3][s2 & 0xFF] ^
                                 RoundKey(keys, round, 1);
        const std::uint32_t t2 = td[0][s2 >> 24] ^ td[1][(s1 >> 16) & 0xFF] ^
                                 td[2][(s0 >> 8) & 0xFF] ^ td[3][s3 & 0xFF] ^
                                 RoundKey(keys, round, 2);
        const std::uint32_t t3 = td[0][s3 >> 24] ^ td[1][(s2 >> 16) & 0xFF] ^
                                 td[2][(s1 >> 8) & 0xFF] ^ td[3][s0 & 0xFF] ^
                                 RoundKey(keys, round, 3);
        s0 = t0;
        s1 = t1;
        s2 = t2;
        s3 = t3;
    }
    const auto& s = kAesInverseSbox;
    auto last = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d, int col) {
        return Column(s[a >> 24], s[(b >> 16) & 0xFF], s[(c >> 8) & 0xFF], s[d & 0xFF]) ^
               RoundKey(keys, kAesRounds, col);
    };
    StoreBig(block, last(s0, s3, s2, s1, 0));
    StoreBig(block + 4, last(s1, s0, s3, s2, 1));
    StoreBig(block + 8, last(s2, s1, s0, s3, 2));
    StoreBig(block + 12, last(s3, s2, s1, s0, 3));
}

void AesInit(const std::uint8_t* key, std::uint8_t* schedule) {
    if (AesNiInUse()) {
        AesNiExpandKey(key, schedule);
    } else {
        PortableExpandKey(key, schedule);
    }
}

void AesEncrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    if (AesNiInUse()) {
        AesNiEncryptBlocks(schedule, blocks, count);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        TableEncryptBlock(schedule + kAesEncryptKeysOffset, blocks + 16 * i);
    }
}

void AesDecrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    if (AesNiInUse()) {
        AesNiDecryptBlocks(schedule, blocks, count);
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        TableDecryptBlock(schedule + kAesDecryptKeysOffset, blocks + 16 * i);
    }
}

using AesNiChainForm = void (*)(const std::uint8_t* schedule, std::uint8_t* blocks,
                                std::size_t count, std::uint8_t* chain,
                                const std::uint8_t* whitening);

// The chain's AES-NI forms, when AES-NI is in use.
template <AesNiChainForm Form>
bool AesNiChain(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count,
                std::uint8_t* chain, const std::uint8_t* whitening) {
    if (!AesNiInUse()) {
        return false;
    }
    Form(schedule, blocks, count, chain, whitening);
    return true;
}

}  // namespace

const BlockCipherOps kAesOps = {AesInit,
                                AesEncrypt,
                                AesDecrypt,
                                kAesScheduleSpace,
                                AesNiChain<AesNiChainEncrypt>,
                                AesNiChain<AesNiChainDecrypt>};

}  // namespace crypto::detail
