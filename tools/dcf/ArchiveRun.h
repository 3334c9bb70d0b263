#pragma once
// One run of the archive code from dcf: the settings with the callbacks that draw progress,
// ask before replacing files and turn Ctrl-C, SIGTERM and SIGHUP into the cancel flag, and what
// the run read.

#include <atomic>
#include <cstdint>
#include <string>

#include "archive/ArchiveUserSettings.h"
#include "archive/DcfReader.h"
#include "tools/dcf/ProgressLine.h"

namespace dcf {

class ArchiveRun {
public:
    // `showProgress`: draw the progress line, where there is a terminal.
    explicit ArchiveRun(bool showProgress);
    ~ArchiveRun();
    ArchiveRun(const ArchiveRun&) = delete;
    ArchiveRun& operator=(const ArchiveRun&) = delete;

    // Lets onFileExists ask on the terminal; without it mode 103 ends at the first existing file.
    void AskBeforeReplacing();

    DCCArchiveUserSettings settings;
    ArchiveReport report;

    // Where a failure of the run lies, for its message: "in the key block", "in entry a/b", ...
    std::string WhereItStopped() const;
    void EndProgress() { progress_.Finish(); }

private:
    static void OnProgress(std::uint32_t percent, void* context);
    static OverwriteMode OnFileExists(const std::u16string* path, bool* flag, void* context);

    std::atomic<std::uint8_t> cancel_{0};
    ProgressLine progress_;
    bool replaceAll_ = false;
};

// A stored name for display: no leading backslash, '/' between components, UTF-8.
std::string DisplayName(const std::u16string& storedName);

}  // namespace dcf
