#include "tools/dcf/ArchiveSource.h"

#include <filesystem>

#include "archive/detail/SfxImage.h"
#include "archive/detail/SfxTrailer.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ToolOutput.h"

namespace dcf {

ImageSource OpenImage(const std::string& command, const std::string& path) {
    const std::u16string native = PathFromArgument(path);
    ImageSource source;
    const platform::ErrorCode error = source.stream.Open(native, platform::OpenMode::Read);
    if (error != platform::kErrorSuccess) {
        FailWith(command, path + ": " + DescribeError(error, native), kExitIo);
    }
    SfxTrailerBytes trailer{};
    if (ReadSfxTrailer(source.stream, trailer) && HasSfxSignature(trailer)) {
        const FormatResult located = OpenSfxImage(native, source.stream);
        if (located != FORMAT_OK) {
            FailWithResult(command, path, located);
        }
        source.selfExtracting = true;
        source.size = SfxImageSize(trailer);
        source.stream.Tell(source.offset);
        return source;
    }
    if (source.stream.Size(source.size) != platform::kErrorSuccess ||
        source.stream.Seek(0) != platform::kErrorSuccess) {
        FailWith(command, path + ": cannot be read", kExitIo);
    }
    return source;
}

std::u16string CanonicalPath(const std::string& argument) {
    std::error_code error;
    const std::filesystem::path canonical =
        std::filesystem::weakly_canonical(std::filesystem::path(PathFromArgument(argument)), error);
    return error ? PathFromArgument(argument) : canonical.u16string();
}

}  // namespace dcf
