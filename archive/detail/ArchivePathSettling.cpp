#include "archive/detail/ArchivePathSettling.h"

#include <string_view>

#include "archive/detail/ArchiveReplacement.h"
#include "archive/detail/DcfWriter.h"
#include "platform/File.h"
#include "platform/Text.h"

namespace {

// Separators of the platform's paths: where the native one is a backslash, '/' works too.
constexpr std::u16string_view kSeparators =
    platform::kPathSeparator == u'\\' ? std::u16string_view(u"\\/") : std::u16string_view(u"/");

// The folder handed back by onArchivePathCheck, less one final separator of either kind.
std::u16string OtherFolder(std::u16string folder) {
    if (!folder.empty() && (folder.back() == u'/' || folder.back() == u'\\')) {
        folder.pop_back();
    }
    return folder;
}

}  // namespace

std::u16string FolderOfPath(const std::u16string& path) {
    const std::size_t separator = path.find_last_of(kSeparators);
    return separator == std::u16string::npos ? std::u16string() : path.substr(0, separator);
}

std::optional<std::u16string> NumberedArchivePath(const std::u16string& path) {
    const std::size_t dot = path.rfind(u'.');
    if (path.empty() || dot == std::u16string::npos || dot == 0) {
        return std::nullopt;
    }
    const std::u16string stem = path.substr(0, dot);
    const std::u16string tail = path.substr(dot);
    for (unsigned long long n = 1;; ++n) {
        std::u16string candidate =
            stem + u" (" + platform::Utf8ToUtf16(std::to_string(n)) + u")" + tail;
        if (!platform::PathExists(candidate)) {
            return candidate;
        }
    }
}

FormatResult SettleArchivePath(const DCCFileFormat& format, ArchiveWriteRequest& request,
                               DCCArchiveUserSettings& settings, bool& skip) {
    skip = false;
    OverwriteMode answer = settings.overwriteMode;
    std::u16string path;
    for (;;) {
        path = request.archiveFolder + platform::kPathSeparator + request.archiveName;
        if (!format.HasOwnExtension(path)) {
            path += format.Extension();
        }
        if (settings.overwriteMode == OVERWRITE_ASK && platform::PathExists(path)) {
            if (settings.onArchiveExists == nullptr) {
                return FORMAT_CANCELLED;
            }
            answer = settings.onArchiveExists(&path, settings.Context(CALLBACK_ARCHIVE_EXISTS));
            if (answer == OVERWRITE_CANCEL) {
                return FORMAT_CANCELLED;
            }
            if (answer == OVERWRITE_SKIP) {
                skip = true;
                return FORMAT_OK;
            }
            if (answer == OVERWRITE_NUMBERED) {
                std::optional<std::u16string> numbered = NumberedArchivePath(path);
                if (!numbered) {
                    return FORMAT_FAILED;
                }
                path = std::move(*numbered);
            }
        }
        if (settings.onArchivePathCheck == nullptr) {
            break;
        }
        // The callback sees a copy: only its answer and the folder it hands back count.
        const std::u16string checked = path;
        std::u16string otherFolder;
        const FormatResult check = settings.onArchivePathCheck(
            &checked, &otherFolder, settings.Context(CALLBACK_ARCHIVE_PATH_CHECK));
        if (check == FORMAT_OK) {
            break;
        }
        if (check != FORMAT_RETRY_FOLDER) {
            return check;
        }
        request.archiveFolder = OtherFolder(std::move(otherFolder));
    }
    request.archiveName = std::move(path);
    settings.overwriteMode = answer;
    return FORMAT_OK;
}

FormatResult PrepareArchivePath(const DCCFileFormat& format, ArchiveWriteRequest* request,
                                DCCArchiveUserSettings* settings, bool& skip) {
    skip = false;
    if (request == nullptr || settings == nullptr || CheckWriteRequest(*request) != FORMAT_OK) {
        return FORMAT_BAD_ARGUMENT;
    }
    const FormatResult settled = SettleArchivePath(format, *request, *settings, skip);
    if (settled != FORMAT_OK || skip) {
        return settled;
    }
    return request->replaceWhenComplete ? FORMAT_OK : RemoveOldArchive(request->archiveName);
}
