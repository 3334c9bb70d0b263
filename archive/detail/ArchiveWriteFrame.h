#pragma once
// The frame in which both formats write an archive: the path settled and the old archive
// deleted (or kept until the end), the new one written under a temporary name in its folder and
// moved to its name only when all of it was written.

#include <functional>
#include <string>

#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ArchiveWriteRequest.h"
#include "archive/detail/FileFormat.h"

// Fills the file at the temporary path; what it leaves there on FORMAT_OK is the archive.
using ArchiveFiller = std::function<FormatResult(const std::u16string& temporaryPath)>;

// Prepares the path as PrepareArchivePath does, reserves a temporary file in the archive's
// folder (FORMAT_FAILED when it can't), runs `fill` on it and moves the file to the archive's
// name when `fill` gives FORMAT_OK. Any other result of `fill` is the result; running out of
// memory is FORMAT_FAILED. The temporary file never stays behind.
FormatResult WriteThroughTemporaryFile(const DCCFileFormat& format, ArchiveWriteRequest* request,
                                       DCCArchiveUserSettings* settings, const ArchiveFiller& fill);
