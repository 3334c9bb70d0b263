#include "archive/detail/SfxTrailer.h"

#include <algorithm>
#include <string_view>

#include "Common/Common/Endian.h"

namespace {

constexpr std::string_view kSignature = "SFXCRYPTOR";
constexpr std::size_t kVersionOffset = 10;
constexpr std::size_t kImageSizeOffset = 12;
constexpr std::size_t kTailMarkOffset = 1010;
constexpr std::uint32_t kTailMark = 5;

}  // namespace

SfxTrailerBytes BuildSfxTrailer(std::uint64_t imageSize) {
    SfxTrailerBytes trailer{};
    std::copy(kSignature.begin(), kSignature.end(), trailer.begin());
    trailer[kVersionOffset] = 1;
    Zelmarik::StoreLittle<std::uint64_t>(trailer.data() + kImageSizeOffset, imageSize);
    Zelmarik::StoreLittle<std::uint32_t>(trailer.data() + kTailMarkOffset, kTailMark);
    return trailer;
}

bool HasSfxSignature(const SfxTrailerBytes& trailer) {
    return std::equal(kSignature.begin(), kSignature.end(), trailer.begin());
}

std::uint64_t SfxImageSize(const SfxTrailerBytes& trailer) {
    return Zelmarik::LoadLittle<std::uint64_t>(trailer.data() + kImageSizeOffset);
}
