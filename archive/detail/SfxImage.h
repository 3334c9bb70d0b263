#pragma once
// Finding the DCF image inside a self-extracting file.

#include <string>

#include "archive/detail/ResultCodes.h"
#include "archive/detail/SfxTrailer.h"
#include "platform/File.h"

// Reads the last 1024 bytes of an open file; false when the file is shorter or unreadable.
bool ReadSfxTrailer(platform::File& file, SfxTrailerBytes& trailer);

// Opens `path` and leaves `stream` at the first byte of the image that the trailer points to.
// FORMAT_SOURCE_EMPTY for a missing or empty file, FORMAT_SOURCE_OPEN_FAILED when it can't be
// opened, FORMAT_NO_PAYLOAD_ROOM when the image would start at the very beginning (no stub),
// FORMAT_FAILED when the trailer can't be read or points outside the file.
FormatResult OpenSfxImage(const std::u16string& path, platform::File& stream);
// The same on a file already open, of `size` bytes (at least a trailer's), whose trailer was read.
FormatResult LocateSfxImage(platform::File& stream, std::uint64_t size,
                            const SfxTrailerBytes& trailer);
