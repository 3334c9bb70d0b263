#pragma once
// Reading a DCF image from an open stream: extracting it, or walking it to list and test it.

#include <cstdint>
#include <string>
#include <vector>

#include "Common/DataCategory/CategoryContainer.h"
#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ResultCodes.h"
#include "platform/ErrorCodes.h"
#include "platform/File.h"

struct ArchiveExtractRequest;
class DCIFileFormatCallback;

struct ArchiveEntryInfo {
    std::u16string name;  // as stored: a leading backslash, backslashes between components
    std::uint64_t size = 0;
    // Bytes the entry takes in the image (header, tag block, data), once it was read to its end.
    std::uint64_t packedSize = 0;
    bool tagged = false;
    Zelmarik::CCategoryContainer categories;
};

// What stood in the way when an entry's file could not be made.
enum class TargetObstacle {
    None,           // nothing: `targetError` says what failed
    Folder,         // a folder has the entry's name
    NotAFile,       // a link, pipe, device or socket: only files are ever replaced
    SourceArchive,  // the entry names the archive being read
};

// What a run learnt of the image, filled as the records are read.
struct ArchiveReport {
    bool keysOpened = false;
    std::uint32_t suiteId = 0;
    std::uint64_t created = 0;  // creation time of the key block, a local FILETIME
    bool headerRead = false;
    std::uint8_t formatVersion = 0;
    std::uint32_t fileCount = 0;
    std::uint32_t folderCount = 0;
    std::uint64_t totalSize = 0;
    // False when the name block was cut short, which extraction takes as nothing to extract.
    bool namesRead = false;
    // The first name refused because it could leave the target, when that ended the run.
    std::u16string unsafeName;
    std::vector<std::u16string> folders;
    // Every entry whose header was read; the last one may be the one that failed.
    std::vector<ArchiveEntryInfo> entries;
    // Entries whose data stream was read to its end, written or skipped.
    std::size_t entriesDone = 0;
    // Why the run ended with FORMAT_TARGET_OPEN_FAILED at the last entry.
    TargetObstacle obstacle = TargetObstacle::None;
    platform::ErrorCode targetError = platform::kErrorSuccess;
};

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
