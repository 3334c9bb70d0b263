#include "archive/FileFormatSFX.h"

#include "archive/ArchiveExtractRequest.h"
#include "archive/DcfReader.h"
#include "archive/SfxImage.h"
#include "archive/SfxTrailer.h"
#include "platform/File.h"
#include "platform/Module.h"

std::u16string GetModuleDirectory() {
    const std::u16string path = platform::ModulePath();
    const std::size_t separator = path.find_last_of(platform::kPathSeparator);
    return separator == std::u16string::npos ? std::u16string() : path.substr(0, separator + 1);
}

std::uint64_t GetFileSizeOf(const std::u16string& path) {
    std::uint64_t size = 0;
    return platform::QueryFileSize(path, size) ? size : 0;
}

std::u16string DefaultStubPath() {
    return GetModuleDirectory() + u"Vomdrel" + platform::kExecutableSuffix;
}

DCCFileFormatSFX::DCCFileFormatSFX() : DCCFileFormatSFX(DefaultStubPath()) {}

DCCFileFormatSFX::DCCFileFormatSFX(std::u16string stubPath)
    : DCCFileFormatDCF(u"EXE", u".exe"), stubPath(std::move(stubPath)) {}

DCCFileFormatSFX::~DCCFileFormatSFX() = default;

bool DCCFileFormatSFX::IsFormatOf(std::u16string path) {
    if (!HasOwnExtension(path) || GetFileSizeOf(path) <= kSfxTrailerSize) {
        return false;
    }
    platform::File file;
    if (file.Open(path, platform::OpenMode::Read) != platform::kErrorSuccess) {
        return false;
    }
    SfxTrailerBytes trailer{};
    return ReadSfxTrailer(file, trailer) && HasSfxSignature(trailer);
}

DCCFileFormat* DCCFileFormatSFX::CreateInstance(const std::u16string* newStubPath) {
    return newStubPath != nullptr ? new DCCFileFormatSFX(*newStubPath) : new DCCFileFormatSFX();
}

int DCCFileFormatSFX::GetFormatId() {
    return 3;
}

FormatResult DCCFileFormatSFX::WriteArchive(ArchiveWriteRequest*, DCCArchiveUserSettings*) {
    // Writing self-extracting archives is not built yet.
    return FORMAT_FAILED;
}

FormatResult DCCFileFormatSFX::ExtractArchive(ArchiveExtractRequest* request,
                                              DCCArchiveUserSettings* settings) {
    if (request == nullptr || settings == nullptr) {
        return FORMAT_BAD_ARGUMENT;
    }
    extractedFiles.clear();
    platform::File stream;
    const FormatResult located = OpenSfxImage(request->sourcePath, stream);
    if (located != FORMAT_OK) {
        return located;
    }
    return ReadArchiveBody(stream, *request, *settings, extractedFiles, callback);
}
