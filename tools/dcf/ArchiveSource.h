#pragma once
// Finding the DCF image in a plain or self-extracting file, for the archive commands of dcf.

#include <cstdint>
#include <string>

#include "platform/File.h"

namespace dcf {

// An archive file with its stream at the first byte of the DCF image.
struct ImageSource {
    platform::File stream;
    bool selfExtracting = false;  // the image was found through the trailer
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

// Opens `path`: a self-extracting file when its last 1024 bytes are a trailer, whatever its
// name, else a plain image from the first byte. Ends the command when the file can't be read.
ImageSource OpenImage(const std::string& command, const std::string& path);

// The absolute form of a path argument, without "." and ".." and with links resolved as far as
// it exists, so that the archive and the files under the target are compared in one spelling:
// an archive that holds its own name must not be written while it is read.
std::u16string CanonicalPath(const std::string& argument);

}  // namespace dcf
