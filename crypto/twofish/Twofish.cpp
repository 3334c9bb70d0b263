// Twofish with a 256-bit key and 16 rounds, little-endian words as in the Twofish paper.
// The schedule holds the 40 round keys and the four key-dependent S-boxes already multiplied
// by their MDS columns.

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

constexpr int kRounds = 16;
constexpr int kRoundKeys = 40;
constexpr std::size_t kSboxOffset = 4 * kRoundKeys;
constexpr std::size_t kScheduleSpace = kSboxOffset + 4 * 4 * 256;

// The 4-bit permutations t0..t3 from which q0 and q1 are built.
using Nibbles = std::uint8_t[4][16];
constexpr Nibbles kQ0Nibbles = {
    {0x8, 0x1, 0x7, 0xD, 0x6, 0xF, 0x3, 0x2, 0x0, 0xB, 0x5, 0x9, 0xE, 0xC, 0xA, 0x4},
    {0xE, 0xC, 0xB, 0x8, 0x1, 0x2, 0x3, 0x5, 0xF, 0x4, 0xA, 0x6, 0x7, 0x0, 0x9, 0xD},
    {0xB, 0xA, 0x5, 0xE, 0x6, 0xD, 0x9, 0x0, 0xC, 0x8, 0xF, 0x3, 0x2, 0x4, 0x7, 0x1},
    {0xD, 0x7, 0xF, 0x4, 0x1, 0x2, 0x6, 0xE, 0x9, 0xB, 0x3, 0x0, 0x8, 0x5, 0xC, 0xA}};
constexpr Nibbles kQ1Nibbles = {
    {0x2, 0x8, 0xB, 0xD, 0xF, 0x7, 0x6, 0xE, 0x3, 0x1, 0x9, 0x4, 0x0, 0xA, 0xC, 0x5},
    {0x1, 0xE, 0x2, 0xB, 0x4, 0xC, 0x3, 0x7, 0x6, 0xD, 0xA, 0x5, 0xF, 0x9, 0x0, 0x8},
    {0x4, 0xC, 0x7, 0x5, 0x1, 0x6, 0x9, 0xA, 0x0, 0xE, 0xD, 0x8, 0x2, 0xB, 0x3, 0xF},
    {0xB, 0x9, 0x5, 0x1, 0xC, 0x3, 0xD, 0xE, 0x6, 0x4, 0x7, 0xF, 0x2, 0x0, 0x8, 0xA}};

constexpr std::uint8_t kMds[4][4] = {{0x01, 0xEF, 0x5B, 0x5B},
                                     {0x5B, 0xEF, 0xEF, 0x01},
                                     {0xEF, 0x5B, 0x01, 0xEF},
                                     {0xEF, 0x01, 0xEF, 0x5B}};
constexpr std::uint8_t kRs[4][8] = {{0x01, 0xA4, 0x55, 0x87, 0x5A, 0x58, 0xDB, 0x9E},
                                    {0xA4, 0x56, 0x82, 0xF3, 0x1E, 0xC6, 0x68, 0xE5},
                                    {0x02, 0xA1, 0xFC, 0xC1, 0x47, 0xAE, 0x3D, 0x19},
                                    {0xA4, 0x55, 0x87, 0x5A, 0x58, 0xDB, 0x9E, 0x03}};

std::uint8_t GfMultiply(std::uint8_t a, std::uint8_t b, unsigned polynomial) {
    unsigned product = 0;
    unsigned shifted = a;
    for (; b != 0; b >>= 1) {
        if ((b & 1) != 0) {
            product ^= shifted;
        }
        shifted <<= 1;
        if ((shifted & 0x100) != 0) {
            shifted ^= polynomial;
        }
    }
    return static_cast<std::uint8_t>(product);
}

std::uint8_t RotateNibbleRight(std::uint8_t x) {
    return static_cast<std::uint8_t>(((x >> 1) | (x << 3)) & 0xF);
}

std::uint8_t Permute(const Nibbles& t, std::uint8_t x) {
    std::uint8_t a = x >> 4;
    std::uint8_t b = x & 0xF;
    for (int stage = 0; stage < 2; ++stage) {
        const std::uint8_t mixedA = a ^ b;
        const std::uint8_t mixedB = (a ^ RotateNibbleRight(b) ^ (a << 3)) & 0xF;
        a = t[2 * stage][mixedA];
        b = t[2 * stage + 1][mixedB];
    }
    return static_cast<std::uint8_t>((b << 4) | a);
}

// Key-independent tables, built by the first key setup of the process and read-only after.
struct TwofishTables {
    std::uint8_t q[2][256];
    std::uint32_t mds[4][256];  // MDS column j times x, as a little-endian word

    TwofishTables() {
        for (int x = 0; x < 256; ++x) {
            q[0][x] = Permute(kQ0Nibbles, static_cast<std::uint8_t>(x));
            q[1][x] = Permute(kQ1Nibbles, static_cast<std::uint8_t>(x));
        }
        constexpr unsigned kMdsPolynomial = 0x169;
        for (int column = 0; column < 4; ++column) {
            for (int x = 0; x < 256; ++x) {
                std::uint32_t word = 0;
                for (int row = 0; row < 4; ++row) {
                    word |= std::uint32_t{GfMultiply(kMds[row][column],
                                                     static_cast<std::uint8_t>(x), kMdsPolynomial)}
                            << (8 * row);
                }
                mds[column][x] = word;
            }
        }
    }
};

const TwofishTables& Tables() {
    static const TwofishTables tables;
    return tables;
}

std::uint8_t Byte(std::uint32_t word, int index) {
    return static_cast<std::uint8_t>(word >> (8 * index));
}

// The q permutations each byte of h passes through for a 256-bit key, listed from the last
// applied to the first.
constexpr int kQChain[4][5] = {{1, 0, 0, 1, 1}, {0, 0, 1, 1, 0}, {1, 1, 0, 0, 0}, {0, 1, 1, 0, 1}};

// h without the MDS step: byte `position` of x through the q chain, keyed by the four words.
std::uint8_t SubstituteByte(const TwofishTables& tables, std::uint8_t x, int position,
                            const std::uint32_t keys[4]) {
    const int* chain = kQChain[position];
    std::uint8_t y = tables.q[chain[4]][x] ^ Byte(keys[3], position);
    y = tables.q[chain[3]][y] ^ Byte(keys[2], position);
    y = tables.q[chain[2]][y] ^ Byte(keys[1], position);
    y = tables.q[chain[1]][y] ^ Byte(keys[0], position);
    return tables.q[chain[0]][y];
}

std::uint32_t H(const TwofishTables& tables, std::uint32_t x, const std::uint32_t keys[4]) {
    std::uint32_t result = 0;
    for (int position = 0; position < 4; ++position) {
        result ^= tables.mds[position][SubstituteByte(tables, Byte(x, position), position, keys)];
    }
    return result;
}

std::uint32_t ReedSolomon(const std::uint8_t* keyBytes) {
    constexpr unsigned kRsPolynomial = 0x14D;
    std::uint32_t word = 0;
    for (int row = 0; row < 4; ++row) {
        std::uint8_t sum = 0;
        for (int column = 0; column < 8; ++column) {
            sum ^= GfMultiply(kRs[row][column], keyBytes[column], kRsPolynomial);
        }
        word |= std::uint32_t{sum} << (8 * row);
    }
    return word;
}

void TwofishInit(const std::uint8_t* key, std::uint8_t* schedule) {
    const TwofishTables& tables = Tables();
    std::uint32_t even[4];
    std::uint32_t odd[4];
    std::uint32_t sboxKeys[4];  // S3, S2, S1, S0: the list of h, in reverse order
    for (int i = 0; i < 4; ++i) {
        even[i] = LoadLittle<std::uint32_t>(key + 8 * i);
        odd[i] = LoadLittle<std::uint32_t>(key + 8 * i + 4);
        sboxKeys[3 - i] = ReedSolomon(key + 8 * i);
    }
    constexpr std::uint32_t kRho = 0x01010101;
    for (int i = 0; i < kRoundKeys / 2; ++i) {
        const std::uint32_t a = H(tables, 2 * i * kRho, even);
        const std::uint32_t b = std::rotl(H(tables, (2 * i + 1) * kRho, odd), 8);
        WriteWord(schedule, 2 * i, a + b);
        WriteWord(schedule, 2 * i + 1, std::rotl(a + 2 * b, 9));
    }
    for (int position = 0; position < 4; ++position) {
        for (int x = 0; x < 256; ++x) {
            const std::uint8_t y =
                SubstituteByte(tables, static_cast<std::uint8_t>(x), position, sboxKeys);
            WriteWord(schedule + kSboxOffset, 256 * position + x, tables.mds[position][y]);
        }
    }
    platform::SecureWipe(even, sizeof(even));
    platform::SecureWipe(odd, sizeof(odd));
    platform::SecureWipe(sboxKeys, sizeof(sboxKeys));
}

std::uint32_t G(const std::uint8_t* sboxes, std::uint32_t x) {
    return ReadWord(sboxes, Byte(x, 0)) ^ ReadWord(sboxes, 256 + Byte(x, 1)) ^
           ReadWord(sboxes, 512 + Byte(x, 2)) ^ ReadWord(sboxes, 768 + Byte(x, 3));
}

void TwofishEncrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    const std::uint8_t* sboxes = schedule + kSboxOffset;
    for (std::size_t b = 0; b < count; ++b, blocks += 16) {
        std::uint32_t r[4];
        for (int i = 0; i < 4; ++i) {
            r[i] = LoadLittle<std::uint32_t>(blocks + 4 * i) ^ ReadWord(schedule, i);
        }
        for (int round = 0; round < kRounds; ++round) {
            const std::uint32_t t0 = G(sboxes, r[0]);
            const std::uint32_t t1 = G(sboxes, std::rotl(r[1], 8));
            r[2] = std::rotr(r[2] ^ (t0 + t1 + ReadWord(schedule, 2 * round + 8)), 1);
            r[3] = std::rotl(r[3], 1) ^ (t0 + 2 * t1 + ReadWord(schedule, 2 * round + 9));
            std::swap(r[0], r[2]);
            std::swap(r[1], r[3]);
        }
        // Undo the last swap while whitening.
        for (int i = 0; i < 4; ++i) {
            StoreLittle(blocks + 4 * i, r[(i + 2) % 4] ^ ReadWord(schedule, 4 + i));
        }
    }
}

void TwofishDecrypt(const std::uint8_t* schedule, std::uint8_t* blocks, std::size_t count) {
    const std::uint8_t* sboxes = schedule + kSboxOffset;
    for (std::size_t b = 0; b < count; ++b, blocks += 16) {
        std::uint32_t r[4];
        for (int i = 0; i < 4; ++i) {
            r[(i + 2) % 4] = LoadLittle<std::uint32_t>(blocks + 4 * i) ^ ReadWord(schedule, 4 + i);
        }
        for (int round = kRounds - 1; round >= 0; --round) {
            std::swap(r[0], r[2]);
            std::swap(r[1], r[3]);
            const std::uint32_t t0 = G(sboxes, r[0]);
            const std::uint32_t t1 = G(sboxes, std::rotl(r[1], 8));
            r[2] = std::rotl(r[2], 1) ^ (t0 + t1 + ReadWord(schedule, 2 * round + 8));
            r[3] = std::rotr(r[3] ^ (t0 + 2 * t1 + ReadWord(schedule, 2 * round + 9)), 1);
        }
        for (int i = 0; i < 4; ++i) {
            StoreLittle(blocks + 4 * i, r[i] ^ ReadWord(schedule, i));
        }
    }
}

}  // namespace

const BlockCipherOps kTwofishOps = {TwofishInit,    TwofishEncrypt, TwofishDecrypt,
                                    kScheduleSpace, nullptr,        nullptr};

}  // namespace crypto::detail
