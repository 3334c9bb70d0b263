#pragma once
// Pieces that deflate would not shrink: a cheap guess, and the zlib stream that stores them.

#include <cstddef>
#include <cstdint>
#include <span>

// True when deflate would save next to nothing: the bytes are spread almost evenly over all
// values and no four-byte string comes back. Text, repeats and short pieces say false.
bool LooksIncompressible(std::span<const std::uint8_t> piece);

// `piece` as a zlib stream of stored blocks, which every inflater reads; false when it does not
// fit `out`. `produced` is its length.
bool WriteStoredStream(std::span<const std::uint8_t> piece, std::span<std::uint8_t> out,
                       std::size_t& produced);
