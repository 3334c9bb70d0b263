#pragma once
// The mount table of this process, from /proc/self/mountinfo.

#include <string>
#include <vector>

namespace platform::posix {

struct MountEntry {
    std::string MountPoint;
    std::string FileSystem;
    std::string Source;
    unsigned Major = 0;
    unsigned Minor = 0;
};

// In the order of the table; false when it could not be read.
bool ReadMountTable(std::vector<MountEntry>& entries);

// The absolute path without links of `path`. A path whose end does not exist keeps its missing
// components behind the deepest part that does. False when no part could be resolved.
bool ResolvePath(const std::string& path, std::string& resolved);

// The mount that `resolved` lies on: the longest mount point that is a prefix at a component
// boundary, the newest one where mounts are stacked. Null when there is none.
const MountEntry* MountOf(const std::vector<MountEntry>& entries, const std::string& resolved);

}  // namespace platform::posix
