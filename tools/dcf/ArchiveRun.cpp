#include "tools/dcf/ArchiveRun.h"

#include "platform/Terminal.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

// Runs that end sooner draw no progress.
constexpr std::chrono::seconds kQuietStart{1};

}  // namespace

ArchiveRun::ArchiveRun(bool showProgress)
    : progress_(showProgress && platform::StandardErrorIsTerminal(), kQuietStart) {
    // Ctrl-C, SIGTERM and SIGHUP cancel the run, which then cleans up after itself.
    platform::CatchInterrupts(&cancel_);
    settings.cancelFlag = &cancel_;
    settings.onProgress = OnProgress;
    for (const std::uint32_t id : {CALLBACK_PROGRESS, CALLBACK_FILE_EXISTS}) {
        settings.callbackContexts[id] = this;
    }
}

ArchiveRun::~ArchiveRun() {
    platform::CatchInterrupts();
}

void ArchiveRun::AskBeforeReplacing() {
    if (platform::HasTerminal()) {
        settings.onFileExists = OnFileExists;
    }
}

void ArchiveRun::PollInterrupt() {
    if (platform::TakeInterrupt()) {
        interrupted_ = true;
        cancel_ = 1;
    }
}

void ArchiveRun::EndProgress() {
    PollInterrupt();
    if (interrupted_) {
        progress_.Interrupted();
    } else {
        progress_.Finish();
    }
}

void ArchiveRun::OnProgress(std::uint32_t percent, void* context) {
    auto& run = *static_cast<ArchiveRun*>(context);
    run.progress_.Update(percent, run.report.totalSize);
}

OverwriteMode ArchiveRun::OnFileExists(const std::u16string* path, bool*, void* context) {
    auto& run = *static_cast<ArchiveRun*>(context);
    if (run.replaceAll_) {
        return OVERWRITE_REPLACE;
    }
    run.progress_.Finish();
    static constexpr std::string_view kChoices[] = {"yes", "no", "all", "quit"};
    static constexpr OverwriteMode kAnswers[] = {OVERWRITE_REPLACE, OVERWRITE_SKIP,
                                                 OVERWRITE_REPLACE, OVERWRITE_CANCEL};
    const std::optional<std::size_t> choice = terminal::AskChoice(
        Printable(platform::Utf16ToUtf8(*path)) + " exists. Replace it? ", kChoices);
    if (!choice) {
        run.PollInterrupt();
        return OVERWRITE_CANCEL;
    }
    run.replaceAll_ = *choice == 2;
    return kAnswers[*choice];
}

std::string ArchiveRun::WhereItStopped() const {
    if (!report.keysOpened) {
        return "in the category preamble or the key block";
    }
    if (!report.headerRead) {
        return "in the folder header";
    }
    if (!report.namesRead) {
        return "in the name block";
    }
    if (report.entries.empty()) {
        return "in the first file header";
    }
    const std::string last = Printable(DisplayName(report.entries.back().name));
    if (report.entriesDone == report.entries.size()) {
        return "in the file header behind entry " + last;
    }
    return "in entry " + last;
}

void ArchiveRun::EndOnFailure(const std::string& command, const std::string& archive,
                              FormatResult result) const {
    if (result == FORMAT_CANCELLED && interrupted_) {
        FailWith(command, archive + ": cancelled by Ctrl-C", kExitCancelled);
    }
    if (result == FORMAT_FAILED && !report.unsafeName.empty()) {
        FailWith(command,
                 archive + ": holds a name that would leave the target folder, \"" +
                     Printable(DisplayName(report.unsafeName)) + "\"; nothing was extracted",
                 kExitDamaged);
    }
    if (result == FORMAT_FAILED || result == FORMAT_TARGET_OPEN_FAILED ||
        result == FORMAT_OUTPUT_WRITE_FAILED) {
        FailWithResult(command, archive + " (" + WhereItStopped() + ")", result);
    }
    if (result != FORMAT_OK) {
        FailWithResult(command, archive, result);
    }
    if (report.headerRead && !report.namesRead) {
        FailWith(command, archive + ": damaged: the name block is cut short", kExitDamaged);
    }
}

std::string DisplayName(const std::u16string& storedName) {
    std::u16string name = storedName;
    if (!name.empty() && name.front() == u'\\') {
        name.erase(0, 1);
    }
    for (char16_t& unit : name) {
        if (unit == u'\\') {
            unit = u'/';
        }
    }
    return platform::Utf16ToUtf8(name);
}

}  // namespace dcftool
