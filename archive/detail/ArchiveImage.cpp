#include <array>

#include "archive/Archive.h"
#include "archive/detail/DcfReader.h"
#include "archive/detail/DcfRecords.h"
#include "archive/detail/SfxImage.h"
#include "archive/detail/SfxTrailer.h"

bool IsSelfExtractingFile(const std::u16string& path) {
    // No extension: the trailer alone decides, as the stubs of other systems have none.
    DCCFileFormatSFX format{std::u16string(), std::u16string()};
    return format.IsFormatOf(path);
}

FormatResult ArchiveImage::Open(const std::u16string& path, platform::ErrorCode& error) {
    selfExtracting_ = false;
    offset_ = 0;
    std::uint64_t fileSize = 0;
    error = stream_.Open(path, platform::OpenMode::Read);
    if (error == platform::kErrorSuccess) {
        error = stream_.Size(fileSize);
    }
    if (error != platform::kErrorSuccess) {
        return FORMAT_SOURCE_OPEN_FAILED;
    }
    // Told from the stream already open: a file looked at again by its path may be another.
    SfxTrailerBytes trailer{};
    if (fileSize > kSfxTrailerSize && ReadSfxTrailer(stream_, trailer) &&
        HasSfxSignature(trailer)) {
        const FormatResult located = LocateSfxImage(stream_, fileSize, trailer);
        if (located != FORMAT_OK) {
            return located;
        }
        selfExtracting_ = true;
        error = stream_.Tell(offset_);
        if (error != platform::kErrorSuccess) {
            return FORMAT_SOURCE_OPEN_FAILED;
        }
        fileSize -= kSfxTrailerSize;
    }
    size_ = fileSize - offset_;
    return FORMAT_OK;
}

bool ArchiveImage::Rewind() {
    return stream_.Seek(offset_) == platform::kErrorSuccess;
}

bool ArchiveImage::HasSignature() {
    std::array<std::uint8_t, dcf::kSignatureSize> head{};
    std::size_t got = 0;
    return Rewind() && stream_.Read(head.data(), head.size(), got) == platform::kErrorSuccess &&
           got == head.size() && dcf::HasSignature(head);
}

FormatResult ArchiveImage::ReadPreamble(Zelmarik::CCategoryContainer& categories, bool& parsed) {
    parsed = false;
    return Rewind() ? ReadArchivePreamble(stream_, categories, parsed) : FORMAT_FAILED;
}

FormatResult ArchiveImage::Extract(ArchiveExtractRequest& request, DCCArchiveUserSettings& settings,
                                   std::vector<std::u16string>& extractedFiles,
                                   ArchiveReport& report) {
    return Rewind() ? ReadArchiveBody(stream_, request, settings, extractedFiles, nullptr, report)
                    : FORMAT_FAILED;
}

FormatResult ArchiveImage::Inspect(ArchiveExtractRequest& request, DCCArchiveUserSettings& settings,
                                   ArchiveReport& report) {
    return Rewind() ? InspectArchiveBody(stream_, request, settings, report) : FORMAT_FAILED;
}
