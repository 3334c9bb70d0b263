#include "tools/dcf/ArchiveSource.h"

#include <filesystem>

#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

ArchiveImage OpenImage(const std::string& command, const std::string& path) {
    const std::u16string native = PathFromArgument(path);
    ArchiveImage image;
    platform::ErrorCode error = platform::kErrorSuccess;
    const FormatResult result = image.Open(native, error);
    if (result == FORMAT_SOURCE_OPEN_FAILED) {
        FailWith(command, path + ": " + DescribeError(error, native), kExitIo);
    }
    if (result != FORMAT_OK) {
        FailWithResult(command, path, result);
    }
    return image;
}

std::u16string CanonicalPath(const std::string& argument) {
    std::error_code error;
    const std::filesystem::path canonical =
        std::filesystem::weakly_canonical(std::filesystem::path(PathFromArgument(argument)), error);
    return error ? PathFromArgument(argument) : canonical.u16string();
}

}  // namespace dcftool
