#include "crypto/Hashes.h"

namespace crypto {
namespace {

constexpr std::array<std::uint32_t, 256> MakeCrcTable() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t n = 0; n < 256; ++n) {
        std::uint32_t c = n;
        for (int k = 0; k < 8; ++k) {
            c = (c & 1) != 0 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
        }
        table[n] = c;
    }
    return table;
}

constexpr std::array<std::uint32_t, 256> kCrcTable = MakeCrcTable();

}  // namespace

std::uint32_t Crc32Plain(std::span<const std::uint8_t> data, std::uint32_t crc) {
    for (const std::uint8_t byte : data) {
        crc = (crc >> 8) ^ kCrcTable[(crc ^ byte) & 0xFF];
    }
    return crc;
}

std::uint32_t Crc32(std::span<const std::uint8_t> data) {
    return ~Crc32Plain(data, 0xFFFFFFFFu);
}

}  // namespace crypto
