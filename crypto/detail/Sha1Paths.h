#pragma once
// The two forms of the SHA-1 compression behind Sha1Transform: the portable one, and the one
// with the SHA extensions, the only file built with the instructions it needs.

#include <cstdint>

namespace crypto::detail {

void Sha1CompressPortable(std::uint32_t* state, const std::uint8_t* block);

void Sha1CompressShaNi(std::uint32_t* state, const std::uint8_t* block);
// Two independent compressions interleaved, so that each fills the other's waits.
void Sha1CompressPairShaNi(std::uint32_t* first, const std::uint8_t* firstBlock,
                           std::uint32_t* second, const std::uint8_t* secondBlock);

}  // namespace crypto::detail
