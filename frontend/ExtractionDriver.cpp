#include "frontend/ExtractionDriver.h"

#include "archive/ArchiveExtractRequest.h"
#include "archive/FileFormatSFX.h"
#include "frontend/ExtractionParameters.h"
#include "platform/File.h"

namespace {

bool IsSeparator(char16_t c) {
    return c == u'/' || c == u'\\';
}

bool Created(platform::ErrorCode error) {
    return error == platform::kErrorSuccess || error == platform::kErrorAlreadyExists;
}

// Every separator in the platform's own form.
std::u16string NativeSeparators(std::u16string path) {
    for (char16_t& c : path) {
        if (IsSeparator(c)) {
            c = platform::kPathSeparator;
        }
    }
    return path;
}

}  // namespace

bool CreateFolderPath(const std::u16string& original) {
    std::u16string path = NativeSeparators(original);
    if (path.empty()) {
        return true;
    }
    if (path.back() == platform::kPathSeparator) {
        const bool driveRoot = path.size() == 3 && path[1] == u':';
        if (driveRoot || path.size() == 1) {
            return true;
        }
        path.pop_back();
    }
    if (Created(platform::MakeDirectory(path))) {
        return true;
    }
    // Create the levels from the top, past a drive ("C:\") or, where the separator is a
    // backslash, a leading one ("\\server\share").
    constexpr bool kBackslashPaths = platform::kPathSeparator == u'\\';
    std::size_t position = 0;
    if ((path.size() > 1 && path[1] == u':') ||
        (kBackslashPaths && path[0] == platform::kPathSeparator)) {
        position = path.find(platform::kPathSeparator, 2);
        if (position == std::u16string::npos) {
            return true;
        }
    }
    for (;;) {
        if (position >= path.size()) {
            return true;
        }
        const std::size_t next = path.find(platform::kPathSeparator, position + 1);
        if (!Created(platform::MakeDirectory(path.substr(0, next)))) {
            return false;
        }
        if (next == std::u16string::npos) {
            return true;
        }
        position = next;
    }
}

bool RunExtraction() {
    const CExtractionParameters& parameters = ExtractionParameters;
    if (!parameters.keyGiven && !parameters.passwordGiven) {
        return false;
    }
    if (GetFileSizeOf(parameters.sourcePath) == 0) {
        return false;
    }
    if (platform::File probe;
        probe.Open(parameters.sourcePath, platform::OpenMode::Read) != platform::kErrorSuccess) {
        return false;
    }

    ArchiveExtractRequest request;
    request.sourcePath = parameters.sourcePath;
    request.targetPath = parameters.targetPath;
    request.password = parameters.password;
    request.keyGiven = parameters.keyGiven;
    request.passwordGiven = parameters.passwordGiven;
    request.securityKey = parameters.securityKey;

    // The command line path asks nothing and replaces what exists.
    DCCArchiveUserSettings settings;
    settings.overwriteMode = OVERWRITE_REPLACE;

    CreateFolderPath(parameters.targetPath);  // a failure shows up as result 8 later
    DCCFileFormatSFX format;
    return format.ExtractArchive(&request, &settings) == FORMAT_OK;
}
