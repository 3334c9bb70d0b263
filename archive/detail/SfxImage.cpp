#include "archive/detail/SfxImage.h"

#include "platform/File.h"

bool ReadSfxTrailer(platform::File& file, SfxTrailerBytes& trailer) {
    std::uint64_t size = 0;
    if (file.Size(size) != platform::kErrorSuccess || size < kSfxTrailerSize ||
        file.Seek(size - kSfxTrailerSize) != platform::kErrorSuccess) {
        return false;
    }
    std::size_t got = 0;
    return file.Read(trailer.data(), trailer.size(), got) == platform::kErrorSuccess &&
           got == trailer.size();
}

FormatResult OpenSfxImage(const std::u16string& path, platform::File& stream) {
    const std::uint64_t size = platform::GetFileSizeOf(path);
    if (size == 0) {
        return FORMAT_SOURCE_EMPTY;
    }
    if (stream.Open(path, platform::OpenMode::Read) != platform::kErrorSuccess) {
        return FORMAT_SOURCE_OPEN_FAILED;
    }
    SfxTrailerBytes trailer{};
    if (!ReadSfxTrailer(stream, trailer)) {
        return FORMAT_FAILED;  // shorter than a trailer: no image can be found
    }
    return LocateSfxImage(stream, size, trailer);
}

FormatResult LocateSfxImage(platform::File& stream, std::uint64_t size,
                            const SfxTrailerBytes& trailer) {
    const std::uint64_t imageSize = SfxImageSize(trailer);
    const std::uint64_t room = size - kSfxTrailerSize;
    if (imageSize == room) {
        return FORMAT_NO_PAYLOAD_ROOM;  // a trailer right behind a bare image: no stub in front
    }
    if (imageSize > room) {
        return FORMAT_FAILED;  // the image would start before the file does
    }
    return stream.Seek(room - imageSize) == platform::kErrorSuccess ? FORMAT_OK : FORMAT_FAILED;
}
