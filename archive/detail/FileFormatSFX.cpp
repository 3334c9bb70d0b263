#include "archive/detail/FileFormatSFX.h"

#include "archive/detail/ArchiveExtractRequest.h"
#include "archive/detail/ArchivePathSettling.h"
#include "archive/detail/ArchiveWriteFrame.h"
#include "archive/detail/DcfReader.h"
#include "archive/detail/DcfWriter.h"
#include "archive/detail/SfxImage.h"
#include "archive/detail/SfxTrailer.h"
#include "platform/File.h"
#include "platform/Module.h"

std::u16string DCCFileFormatSFX::DefaultStubPath() {
    return platform::GetModuleDirectory() + u"Vomdrel" + platform::kExecutableSuffix;
}

DCCFileFormatSFX::DCCFileFormatSFX() : DCCFileFormatSFX(DefaultStubPath()) {}

DCCFileFormatSFX::DCCFileFormatSFX(std::u16string stubPath)
    : DCCFileFormatSFX(std::move(stubPath), u".exe") {}

DCCFileFormatSFX::DCCFileFormatSFX(std::u16string stubPath, std::u16string extension)
    : DCCFileFormatDCF(u"EXE", std::move(extension)), stubPath(std::move(stubPath)) {}

DCCFileFormatSFX::~DCCFileFormatSFX() = default;

bool DCCFileFormatSFX::IsFormatOf(std::u16string path) {
    if (!HasOwnExtension(path) || platform::GetFileSizeOf(path) <= kSfxTrailerSize) {
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

FormatResult DCCFileFormatSFX::WriteArchive(ArchiveWriteRequest* request,
                                            DCCArchiveUserSettings* settings) {
    return WriteThroughTemporaryFile(
        *this, request, settings, [&](const std::u16string& temporaryPath) {
            if (platform::CopyFileReplacing(stubPath, temporaryPath) != platform::kErrorSuccess) {
                return FORMAT_STUB_COPY_FAILED;
            }
            const std::uint64_t stubSize = platform::GetFileSizeOf(temporaryPath);
            platform::File stream;
            if (stream.Open(temporaryPath, platform::OpenMode::Append) != platform::kErrorSuccess) {
                return FORMAT_FAILED;
            }
            const FormatResult written = WriteArchiveBody(stream, *request, *settings);
            if (written != FORMAT_OK) {
                return written;
            }
            const SfxTrailerBytes trailer =
                BuildSfxTrailer(platform::GetFileSizeOf(temporaryPath) - stubSize);
            if (stream.Open(temporaryPath, platform::OpenMode::Append) != platform::kErrorSuccess ||
                stream.Write(trailer.data(), trailer.size()) != platform::kErrorSuccess) {
                return FORMAT_OUTPUT_WRITE_FAILED;
            }
            stream.Close();
            return FORMAT_OK;
        });
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
