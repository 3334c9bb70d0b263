#pragma once
// The three round functions shared by CAST-128 (RFC 2144) and CAST-256 (RFC 2612).

#include <bit>
#include <cstdint>

#include "crypto/detail/CastSboxes.h"

namespace crypto::detail {

inline std::uint32_t CastSbox(int box, std::uint32_t i, int byte) {
    return kCastSboxes[box][(i >> (24 - 8 * byte)) & 0xFF];
}

inline std::uint32_t CastF1(std::uint32_t d, std::uint32_t km, std::uint32_t kr) {
    const std::uint32_t i = std::rotl(km + d, static_cast<int>(kr & 31));
    return ((CastSbox(0, i, 0) ^ CastSbox(1, i, 1)) - CastSbox(2, i, 2)) + CastSbox(3, i, 3);
}

inline std::uint32_t CastF2(std::uint32_t d, std::uint32_t km, std::uint32_t kr) {
    const std::uint32_t i = std::rotl(km ^ d, static_cast<int>(kr & 31));
    return ((CastSbox(0, i, 0) - CastSbox(1, i, 1)) + CastSbox(2, i, 2)) ^ CastSbox(3, i, 3);
}

inline std::uint32_t CastF3(std::uint32_t d, std::uint32_t km, std::uint32_t kr) {
    const std::uint32_t i = std::rotl(km - d, static_cast<int>(kr & 31));
    return ((CastSbox(0, i, 0) + CastSbox(1, i, 1)) ^ CastSbox(2, i, 2)) - CastSbox(3, i, 3);
}

}  // namespace crypto::detail
