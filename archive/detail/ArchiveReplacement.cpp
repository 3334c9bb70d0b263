#include "archive/detail/ArchiveReplacement.h"

#include "platform/File.h"

namespace {

// The prefix of the temporary names in the archive's folder.
constexpr std::u16string_view kTempPrefix = u"st";

}  // namespace

FormatResult RemoveOldArchive(const std::u16string& path) {
    const platform::ErrorCode error = platform::RemoveFile(path);
    return error == platform::kErrorSuccess || error == platform::kErrorFileNotFound
               ? FORMAT_OK
               : FORMAT_REPLACE_FAILED;
}

ArchiveTempFile::~ArchiveTempFile() {
    if (!path_.empty()) {
        platform::RemoveFile(path_);
    }
}

bool ArchiveTempFile::Reserve(const std::u16string& folder) {
    std::u16string path;
    if (platform::CreateTempFile(folder, std::u16string(kTempPrefix), path) !=
        platform::kErrorSuccess) {
        return false;
    }
    platform::RemoveFile(path);
    path_ = std::move(path);
    return true;
}

FormatResult ArchiveTempFile::MoveTo(const std::u16string& target, bool atOnce) {
    if (!atOnce) {
        platform::RemoveFile(target);
    }
    const platform::ErrorCode moved = atOnce ? platform::MoveFileReplacing(path_, target)
                                             : platform::MoveFileNoReplace(path_, target);
    if (moved != platform::kErrorSuccess) {
        return FORMAT_REPLACE_FAILED;  // the destructor deletes the temporary file
    }
    path_.clear();
    return FORMAT_OK;
}
