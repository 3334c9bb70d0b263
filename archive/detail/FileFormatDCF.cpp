#include "archive/detail/FileFormatDCF.h"

#include "archive/detail/ArchiveExtractRequest.h"
#include "archive/detail/ArchivePathSettling.h"
#include "archive/detail/ArchiveWriteFrame.h"
#include "archive/detail/DcfReader.h"
#include "archive/detail/DcfWriter.h"
#include "platform/File.h"

namespace {

// The preamble's fixed part and the key block: nothing shorter can be an image.
constexpr std::uint64_t kMinimumImageSize = 1536;

}  // namespace

DCCFileFormatDCF::DCCFileFormatDCF() : DCCFileFormat(u"DCF", u".dcf", nullptr) {}

DCCFileFormatDCF::DCCFileFormatDCF(std::u16string formatName, std::u16string extension)
    : DCCFileFormat(std::move(formatName), std::move(extension), nullptr) {}

DCCFileFormatDCF::~DCCFileFormatDCF() = default;

bool DCCFileFormatDCF::IsFormatOf(std::u16string path) {
    return HasOwnExtension(path);
}

DCCFileFormat* DCCFileFormatDCF::CreateInstance(const std::u16string*) {
    return new DCCFileFormatDCF();
}

int DCCFileFormatDCF::GetFormatId() {
    return 2;
}

FormatResult DCCFileFormatDCF::WriteArchive(ArchiveWriteRequest* request,
                                            DCCArchiveUserSettings* settings) {
    return WriteThroughTemporaryFile(
        *this, request, settings, [&](const std::u16string& temporaryPath) {
            platform::File stream;
            if (stream.Open(temporaryPath, platform::OpenMode::CreateNew) !=
                platform::kErrorSuccess) {
                return FORMAT_FAILED;
            }
            return WriteArchiveBody(stream, *request, *settings);
        });
}

FormatResult DCCFileFormatDCF::ExtractArchive(ArchiveExtractRequest* request,
                                              DCCArchiveUserSettings* settings) {
    if (request == nullptr || settings == nullptr) {
        return FORMAT_BAD_ARGUMENT;
    }
    extractedFiles.clear();
    std::uint64_t size = 0;
    if (!platform::QueryFileSize(request->sourcePath, size) || size < kMinimumImageSize) {
        return FORMAT_FAILED;
    }
    platform::File stream;
    if (stream.Open(request->sourcePath, platform::OpenMode::Read) != platform::kErrorSuccess) {
        return FORMAT_FAILED;
    }
    return ReadArchiveBody(stream, *request, *settings, extractedFiles, callback);
}
