#pragma once
// What the user decided and how the archive code reaches the user: the overwrite mode, the cancel
// flag, and thirteen callback slots, each with a context looked up by its fixed id. A null slot
// means the event is not reported.

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "archive/detail/ResultCodes.h"

using ProgressCallback = void (*)(std::uint32_t percent, void* context);
using FileDoneCallback = void (*)(const std::u16string* path, void* context);
using FileExistsCallback = OverwriteMode (*)(const std::u16string* path, bool* flag, void* context);
using ArchiveExistsCallback = OverwriteMode (*)(const std::u16string* path, void* context);
using ArchivePathCheckCallback = FormatResult (*)(const std::u16string* path,
                                                  std::u16string* otherFolder, void* context);
// What the callback leaves in `path` is the path that is opened.
using FileOpeningCallback = void (*)(std::u16string* path, void* context);
using FileWritingCallback = void (*)(const std::u16string* path, bool skipped, void* context);
// The slots that this system neither sets nor calls.
using UnusedCallback = void (*)();

// The whole percent that `processed` is of `total`, at most 100, as progress reports it;
// nothing when the total is 0.
std::optional<std::uint32_t> ProgressPercent(std::uint64_t processed, std::uint64_t total);

// The most threads a data stream is deflated or inflated on.
inline constexpr unsigned kMaxCodecWorkers = 8;

// Ids under which each callback finds its context.
enum CallbackId : std::uint32_t {
    CALLBACK_PROGRESS = 0,
    CALLBACK_FILE_DONE = 1,
    CALLBACK_FILE_EXISTS = 3,
    CALLBACK_ARCHIVE_EXISTS = 9,
    CALLBACK_ARCHIVE_PATH_CHECK = 10,
    CALLBACK_FILE_OPENING = 11,
    CALLBACK_FILE_WRITING = 12,
};

class DCCArchiveUserSettings {
public:
    DCCArchiveUserSettings() = default;
    virtual ~DCCArchiveUserSettings() = default;

    // False when `cancelFlag` is null, else whether the byte it points to is non-zero. Another
    // thread sets the byte while the archive code polls it.
    bool IsCancelled() const;
    // The context registered for a callback id, null when none was set.
    void* Context(std::uint32_t id) const;

    OverwriteMode overwriteMode = OVERWRITE_REPLACE;
    // Threads that deflate or inflate the pieces of data streams, the calling thread included,
    // at most kMaxCodecWorkers; 0 leaves it to the processor count.
    unsigned codecWorkers = 0;
    const std::atomic<std::uint8_t>* cancelFlag = nullptr;
    std::map<std::uint32_t, void*> callbackContexts;

    // The thirteen slots, in order of their ids.
    ProgressCallback onProgress = nullptr;                  // 0
    FileDoneCallback onFileDone = nullptr;                  // 1
    UnusedCallback slot2 = nullptr;                         // 2
    FileExistsCallback onFileExists = nullptr;              // 3
    UnusedCallback slot4 = nullptr;                         // 4
    UnusedCallback slot5 = nullptr;                         // 5
    UnusedCallback slot6 = nullptr;                         // 6
    UnusedCallback slot7 = nullptr;                         // 7
    UnusedCallback slot8 = nullptr;                         // 8
    ArchiveExistsCallback onArchiveExists = nullptr;        // 9
    ArchivePathCheckCallback onArchivePathCheck = nullptr;  // 10
    FileOpeningCallback onFileOpening = nullptr;            // 11
    FileWritingCallback onFileWriting = nullptr;            // 12
};
