#pragma once
// Hex text to bytes and back for the published vectors; random bytes for the round trips.

#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace crypto::test {

inline std::vector<std::uint8_t> FromHex(std::string_view hex) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(
            static_cast<std::uint8_t>(std::stoul(std::string(hex.substr(i, 2)), nullptr, 16)));
    }
    return bytes;
}

inline std::string ToHex(std::span<const std::uint8_t> bytes) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t b : bytes) {
        text += kDigits[b >> 4];
        text += kDigits[b & 15];
    }
    return text;
}

inline std::span<const std::uint8_t> AsBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

inline std::vector<std::uint8_t> RandomBytes(std::mt19937& random, std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    for (auto& b : bytes) {
        b = static_cast<std::uint8_t>(random());
    }
    return bytes;
}

}  // namespace crypto::test
