#pragma once
// Explicit byte order: loads and stores through bytes, never by casting buffers to integers.

#include <cstddef>
#include <cstdint>

namespace Zelmarik {

template <typename T>
constexpr T LoadLittle(const std::uint8_t* p) {
    T value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        value |= static_cast<T>(static_cast<T>(p[i]) << (8 * i));
    }
    return value;
}

template <typename T>
constexpr T LoadBig(const std::uint8_t* p) {
    T value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        value = static_cast<T>((value << 8) | p[i]);
    }
    return value;
}

template <typename T>
constexpr void StoreLittle(std::uint8_t* p, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        p[i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

template <typename T>
constexpr void StoreBig(std::uint8_t* p, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        p[sizeof(T) - 1 - i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

}  // namespace Zelmarik
