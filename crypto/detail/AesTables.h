#pragma once
// AES tables (FIPS 197), computed at compile time: the S-box and its inverse, and four round
// tables for each direction. Words are columns with row 0 in the most significant byte.

#include <array>
#include <bit>
#include <cstdint>

namespace crypto::detail {

constexpr std::uint8_t GfDouble(std::uint8_t x) {
    return static_cast<std::uint8_t>((x << 1) ^ ((x & 0x80) != 0 ? 0x1B : 0));
}

constexpr std::uint8_t GfMultiply(std::uint8_t a, std::uint8_t b) {
    std::uint8_t product = 0;
    for (; b != 0; b >>= 1, a = GfDouble(a)) {
        if ((b & 1) != 0) {
            product ^= a;
        }
    }
    return product;
}

constexpr std::array<std::uint8_t, 256> MakeAesSbox() {
    // Powers of the generator 3 give the logarithms, and with them the multiplicative inverses.
    std::array<std::uint8_t, 256> power{};
    std::array<std::uint8_t, 256> logarithm{};
    std::uint8_t x = 1;
    for (int i = 0; i < 255; ++i) {
        power[i] = x;
        logarithm[x] = static_cast<std::uint8_t>(i);
        x = GfMultiply(x, 3);
    }
    std::array<std::uint8_t, 256> sbox{};
    for (int v = 0; v < 256; ++v) {
        const std::uint8_t inverse = v == 0 ? 0 : power[(255 - logarithm[v]) % 255];
        sbox[v] =
            static_cast<std::uint8_t>(inverse ^ std::rotl(inverse, 1) ^ std::rotl(inverse, 2) ^
                                      std::rotl(inverse, 3) ^ std::rotl(inverse, 4) ^ 0x63);
    }
    return sbox;
}

inline constexpr std::array<std::uint8_t, 256> kAesSbox = MakeAesSbox();

constexpr std::array<std::uint8_t, 256> MakeAesInverseSbox() {
    std::array<std::uint8_t, 256> inverse{};
    for (int v = 0; v < 256; ++v) {
        inverse[kAesSbox[v]] = static_cast<std::uint8_t>(v);
    }
    return inverse;
}

inline constexpr std::array<std::uint8_t, 256> kAesInverseSbox = MakeAesInverseSbox();

constexpr std::uint32_t Column(std::uint8_t r0, std::uint8_t r1, std::uint8_t r2, std::uint8_t r3) {
    return (std::uint32_t{r0} << 24) | (std::uint32_t{r1} << 16) | (std::uint32_t{r2} << 8) | r3;
}

// Table t holds the column of the first table rotated right by 8·t bits.
constexpr std::array<std::array<std::uint32_t, 256>, 4> MakeAesRoundTables(bool inverse) {
    std::array<std::array<std::uint32_t, 256>, 4> tables{};
    for (int v = 0; v < 256; ++v) {
        std::uint32_t column;
        if (inverse) {
            const std::uint8_t s = kAesInverseSbox[v];
            column =
                Column(GfMultiply(s, 14), GfMultiply(s, 9), GfMultiply(s, 13), GfMultiply(s, 11));
        } else {
            const std::uint8_t s = kAesSbox[v];
            column = Column(GfMultiply(s, 2), s, s, GfMultiply(s, 3));
        }
        for (int t = 0; t < 4; ++t) {
            tables[t][v] = std::rotr(column, 8 * t);
        }
    }
    return tables;
}

inline constexpr auto kAesEncryptTables = MakeAesRoundTables(false);
inline constexpr auto kAesDecryptTables = MakeAesRoundTables(true);

}  // namespace crypto::detail
