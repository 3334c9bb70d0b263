#pragma once
// One run of the archive code from dcf: the settings with the callbacks that draw progress,
// ask before replacing files and turn Ctrl-C, SIGTERM and SIGHUP into the cancel flag, and what
// the run read.

#include <atomic>
#include <cstdint>
#include <string>

#include "archive/Archive.h"
#include "frontend/terminal/TerminalUi.h"

namespace dcftool {

class ArchiveRun {
public:
    // `showProgress`: draw the progress line, where standard error is a terminal.
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
    // Ends the command when the run over `archive` did not read the whole archive: Ctrl-C,
    // damage, a name that would leave the target, a wrong key, ...
    void EndOnFailure(const std::string& command, const std::string& archive,
                      FormatResult result) const;
    // Clears the progress line; after Ctrl-C moves past the "^C" on the terminal.
    void EndProgress();
    // Whether Ctrl-C cancelled the run.
    bool Interrupted() const { return interrupted_; }

private:
    // Turns a pending Ctrl-C, SIGTERM or SIGHUP into the cancel flag.
    void PollInterrupt();
    static void OnProgress(std::uint32_t percent, void* context);
    static OverwriteMode OnFileExists(const std::u16string* path, bool* flag, void* context);

    std::atomic<std::uint8_t> cancel_{0};
    bool interrupted_ = false;
    terminal::ProgressLine progress_;
    bool replaceAll_ = false;
};

// A stored name for display: no leading backslash, '/' between components, UTF-8.
std::string DisplayName(const std::u16string& storedName);

}  // namespace dcftool
