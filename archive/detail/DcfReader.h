#pragma once
// Reading a DCF image from an open stream: extracting it, or walking it to list and test it.

#include <cstdint>
#include <string>
#include <vector>

#include "Common/DataCategory/CategoryContainer.h"
#include "archive/detail/ArchiveReport.h"
#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ResultCodes.h"
#include "platform/File.h"

struct ArchiveExtractRequest;
class DCIFileFormatCallback;

// Reads the image that starts at the stream's current position and extracts it under the
// request's target folder, appending each finished file to `extractedFiles` and telling
// `callback` (may be null). The stream stays open for the caller.
FormatResult ReadArchiveBody(platform::File& stream, ArchiveExtractRequest& request,
                             DCCArchiveUserSettings& settings,
                             std::vector<std::u16string>& extractedFiles,
                             DCIFileFormatCallback* callback);
// The same, telling what was read in `report`.
FormatResult ReadArchiveBody(platform::File& stream, ArchiveExtractRequest& request,
                             DCCArchiveUserSettings& settings,
                             std::vector<std::u16string>& extractedFiles,
                             DCIFileFormatCallback* callback, ArchiveReport& report);

// Walks the image like ReadArchiveBody, with the same results, but writes nothing: each data
// stream is decrypted and decompressed to prove it, and the entries go to `report`. The
// request's selection plays no part.
FormatResult InspectArchiveBody(platform::File& stream, ArchiveExtractRequest& request,
                                DCCArchiveUserSettings& settings, ArchiveReport& report);

// The clear category preamble at the stream's position; no key is needed. FORMAT_FAILED
// without the signature or when its bytes can't be read. `parsed` tells whether the category
// block was intact. The stream's position afterwards is not defined.
FormatResult ReadArchivePreamble(platform::File& stream, Zelmarik::CCategoryContainer& categories,
                                 bool& parsed);
