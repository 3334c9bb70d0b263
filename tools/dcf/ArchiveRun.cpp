#include "tools/dcf/ArchiveRun.h"

#include "platform/Terminal.h"
#include "platform/Text.h"
#include "tools/dcf/ReplaceQuestion.h"
#include "tools/dcf/ToolOutput.h"

namespace dcf {

ArchiveRun::ArchiveRun(bool showProgress)
    : progress_(showProgress && platform::IsInteractiveTerminal()) {
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
    if (platform::IsInteractiveTerminal()) {
        settings.onFileExists = OnFileExists;
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
    static constexpr ReplaceChoice kChoices[] = {{"yes", OVERWRITE_REPLACE},
                                                 {"no", OVERWRITE_SKIP},
                                                 {"all", OVERWRITE_REPLACE},
                                                 {"quit", OVERWRITE_CANCEL}};
    const ReplaceChoice* choice = AskReplaceOnTerminal(*path, kChoices);
    if (choice == nullptr) {
        return OVERWRITE_CANCEL;
    }
    run.replaceAll_ = choice == &kChoices[2];
    return choice->answer;
}

std::string ArchiveRun::WhereItStopped() const {
    if (!report.keysOpened) {
        return "in the category preamble or the key block";
    }
    if (!report.headerRead) {
        return "in the folder header";
    }
    if (!report.namesRead) {
        return "in the name block (cut short)";
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

}  // namespace dcf
