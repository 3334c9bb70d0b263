#include "archive/FileFormatDCF.h"

#include <new>

#include "archive/ArchiveExtractRequest.h"
#include "archive/ArchivePathSettling.h"
#include "archive/ArchiveReplacement.h"
#include "archive/DcfReader.h"
#include "archive/DcfWriter.h"
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
    try {
        bool skip = false;
        const FormatResult prepared = PrepareArchivePath(*this, request, settings, skip);
        if (prepared != FORMAT_OK || skip) {
            return prepared;
        }
        ArchiveTempFile temp;
        platform::File stream;
        if (!temp.Reserve(FolderOfPath(request->archiveName)) ||
            stream.Open(temp.Path(), platform::OpenMode::CreateNew) != platform::kErrorSuccess) {
            return FORMAT_FAILED;
        }
        const FormatResult written = WriteArchiveBody(stream, *request, *settings);
        return written == FORMAT_OK ? temp.MoveTo(request->archiveName) : written;
    } catch (const std::bad_alloc&) {
        return FORMAT_FAILED;  // the temporary file is gone with its holder
    }
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
