#pragma once
// Finding the DCF image in a plain or self-extracting file, for the archive commands of dcf.

#include <string>

#include "archive/Archive.h"

namespace dcftool {

// Opens the archive at `path`, plain or self-extracting whatever its name. Ends the command
// when the file can't be read or its trailer points nowhere.
ArchiveImage OpenImage(const std::string& command, const std::string& path);

// The absolute form of a path argument, without "." and ".." and with links resolved as far as
// it exists, so that the archive and the files under the target are compared in one spelling:
// an archive that holds its own name must not be written while it is read.
std::u16string CanonicalPath(const std::string& argument);

}  // namespace dcftool
