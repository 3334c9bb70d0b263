#pragma once
// The listing that the archive writer expects from its caller: each folder and each file under
// the paths given to dcf create, folders in front of what they hold, with the common root that
// the names of the archive begin after.

#include <cstdint>
#include <string>
#include <vector>

#include "archive/ArchiveWriteRequest.h"

namespace dcf {

struct SourceListing {
    std::u16string rootPath;  // the first given path; names begin at its last separator
    std::vector<ArchiveWriteItem> items;
    std::size_t files = 0;
    std::size_t folders = 0;
    std::uint64_t totalSize = 0;
};

// Lists `paths` (files or folders, walked recursively, in name order) for `command`. All paths
// must lie in one folder, which becomes the common root. Links to folders are not followed;
// what is neither a file nor a folder, a name with a backslash and a name that Windows could not
// extract (a ':', a device name, a final dot or blank) are left out, each with a line
// on standard error unless `quiet`. Ends the command for a path that does not exist or can't be
// walked.
SourceListing ListSources(const std::string& command, const std::vector<std::string>& paths,
                          bool quiet);

// A listed path as the archive names it, from the common root on: "reports/2021/a.txt".
std::string NameUnderRoot(const SourceListing& listing, const std::u16string& path);

}  // namespace dcf
