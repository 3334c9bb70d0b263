#pragma once
// The listing that the archive writer expects from its caller: each folder and each file under
// the paths given to dcf create, folders in front of what they hold. Each path is stored under
// its own last name, wherever it lies: the items carry paths under one made-up root ("/" and
// the name in the archive), and the writer's onFileOpening callback turns them into the real
// ones.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "archive/Archive.h"

namespace dcftool {

struct SourceListing {
    std::u16string rootPath;  // the made-up root
    std::vector<ArchiveWriteItem> items;
    std::map<std::u16string, std::u16string> realPaths;  // of each file item
    std::size_t files = 0;
    std::size_t folders = 0;
    std::size_t leftOut = 0;
    std::uint64_t totalSize = 0;
};

struct WalkOptions {
    std::vector<std::u16string> excluded;  // patterns of --exclude
    std::u16string archive;                // the archive to be written, which is left out
};

// Lists `paths` (files or folders, walked recursively, in name order) for `command`. Links to
// folders are not followed; links to files are, with a note. Left out, each with a note on
// standard error: what is neither a file nor a folder, what can't be read, a name that is not
// UTF-8, has a backslash or could not be extracted on Windows (a ':', a device name, a final dot
// or blank), what an --exclude pattern matches, and the archive itself. Ends the command for a
// path that does not exist, and for two paths of one name.
SourceListing ListSources(const std::string& command, const std::vector<std::string>& paths,
                          const WalkOptions& options);

// A listed item's name in the archive, in display form: "reports/2021/a.txt".
std::string NameUnderRoot(const ArchiveWriteItem& item);

// Lets the writer open the real file behind each listed item.
void ReadRealPaths(const SourceListing& listing, DCCArchiveUserSettings& settings);

}  // namespace dcftool
