#pragma once
// 32-bit words in a schedule area of unaligned bytes, in the machine's own order: the area never
// leaves the process, and memcpy is the one access that is defined for any alignment.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace crypto::detail {

inline std::uint32_t ReadWord(const std::uint8_t* area, std::size_t index) {
    std::uint32_t word;
    std::memcpy(&word, area + 4 * index, sizeof(word));
    return word;
}

inline void WriteWord(std::uint8_t* area, std::size_t index, std::uint32_t word) {
    std::memcpy(area + 4 * index, &word, sizeof(word));
}

inline void WriteWords(std::uint8_t* area, const std::uint32_t* words, std::size_t count) {
    std::memcpy(area, words, count * sizeof(std::uint32_t));
}

}  // namespace crypto::detail
