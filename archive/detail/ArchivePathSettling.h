#pragma once
// Where a new archive goes: the path from its folder and name, the question when a file is
// there, numbered names, and the caller's check of the path.

#include <optional>
#include <string>

#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ArchiveWriteRequest.h"
#include "archive/detail/FileFormat.h"

// Settles the path of the archive and leaves it in `request.archiveName`, with the answer of
// onArchiveExists in `settings.overwriteMode`. FORMAT_OK with `skip` set: the existing archive
// stays and nothing is to be written. Any other result than FORMAT_OK ends the write; nothing
// has been touched then.
FormatResult SettleArchivePath(const DCCFileFormat& format, ArchiveWriteRequest& request,
                               DCCArchiveUserSettings& settings, bool& skip);

// What both formats do before they write: refuse a null request or settings and a request
// beyond the format's limits (FORMAT_BAD_ARGUMENT), settle the path, and delete the old archive
// (FORMAT_REPLACE_FAILED when it can't go) unless the request keeps it until the new one is
// complete. From a FORMAT_OK without `skip` on, the old archive is gone in the first case.
FormatResult PrepareArchivePath(const DCCFileFormat& format, ArchiveWriteRequest* request,
                                DCCArchiveUserSettings* settings, bool& skip);

// The first of "name (1).ext", "name (2).ext", ... that does not exist. Nothing for an empty
// path, a path without a dot, or one whose last dot is its first character.
std::optional<std::u16string> NumberedArchivePath(const std::u16string& path);

// What stands before the last separator of `path`; empty when it has none.
std::u16string FolderOfPath(const std::u16string& path);
