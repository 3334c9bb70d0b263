#pragma once
// Putting a new archive in place of an old one: the old one is deleted before the new one is
// written, the new one is written under a temporary name in the same folder and moved to its
// name at the end, so that the move never crosses a volume and a failed write leaves nothing.

#include <string>

#include "archive/detail/ResultCodes.h"

// Deletes the old archive at `path`. FORMAT_REPLACE_FAILED when it is there and can't go.
FormatResult RemoveOldArchive(const std::u16string& path);

// A temporary name "st*.tmp" in the archive's folder, deleted again at the end unless the file
// was moved to its name.
class ArchiveTempFile {
public:
    ArchiveTempFile() = default;
    ~ArchiveTempFile();
    ArchiveTempFile(const ArchiveTempFile&) = delete;
    ArchiveTempFile& operator=(const ArchiveTempFile&) = delete;

    // Makes a unique file in `folder` and deletes it, keeping its name for the new archive.
    // False when no such file could be made.
    bool Reserve(const std::u16string& folder);
    const std::u16string& Path() const { return path_; }
    // Deletes what is at `target` and moves the temporary file there, or with `atOnce` puts it
    // in the place of what is there in one step. FORMAT_REPLACE_FAILED when the move fails;
    // the temporary file is deleted then.
    FormatResult MoveTo(const std::u16string& target, bool atOnce);

private:
    std::u16string path_;
};
