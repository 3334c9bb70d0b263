#pragma once
// Writing a DCF image to an open stream: the category preamble, the sealed key block, the
// headers, the name block and one entry for each file of the request.

#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ArchiveWriteRequest.h"
#include "archive/detail/ResultCodes.h"
#include "platform/File.h"

// FORMAT_BAD_ARGUMENT when the request passes a limit of the format: a password of more than 64
// bytes, a file of 2^31 whole pieces or more, more than 2^32 - 1 files or folders, a name block
// beyond 32 bits, an item whose path does not begin with the root's folder, or one whose name in
// the archive the reader here would refuse (an empty, "." or ".." component, a ':'...): an
// archive is never written that could not be read back. Also a recipient key whose modulus
// PublicModulusProblem refuses: nobody could open the archive.
FormatResult CheckWriteRequest(const ArchiveWriteRequest& request);

// Appends the image of `request` at the stream's current position, without seeking, and closes
// the stream on every way out. Starts the random pool for the key block and stops it again.
// A source file that can't be opened gives an entry without data; the result codes are those
// of the format classes' WriteArchive.
FormatResult WriteArchiveBody(platform::File& stream, ArchiveWriteRequest& request,
                              DCCArchiveUserSettings& settings);
