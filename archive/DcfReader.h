#pragma once
// Reading a DCF image from an open stream.

#include <string>
#include <vector>

#include "archive/ArchiveUserSettings.h"
#include "archive/ResultCodes.h"
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
