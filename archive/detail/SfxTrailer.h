#pragma once
// The 1024-byte trailer at the very end of a self-extracting file. It tells the size of the
// archive image in front of it; the stub in front of the image may have any size.

#include <array>
#include <cstdint>
#include <optional>

inline constexpr std::size_t kSfxTrailerSize = 1024;

using SfxTrailerBytes = std::array<std::uint8_t, kSfxTrailerSize>;

// The trailer for an image of `imageSize` bytes.
SfxTrailerBytes BuildSfxTrailer(std::uint64_t imageSize);
// True if the trailer starts with the signature "SFXCRYPTOR"; nothing else is tested.
bool HasSfxSignature(const SfxTrailerBytes& trailer);
// The image size the trailer claims; the signature is not tested.
std::uint64_t SfxImageSize(const SfxTrailerBytes& trailer);
