#pragma once
// What a run of the reader learnt of an image, filled as its records are read.

#include <cstdint>
#include <string>
#include <vector>

#include "Common/DataCategory/CategoryContainer.h"
#include "platform/ErrorCodes.h"

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
