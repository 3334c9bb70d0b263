#include "frontend/posix/TerminalFrontEnd.h"

#include <chrono>
#include <optional>
#include <thread>

#include "archive/Archive.h"
#include "frontend/ExtractionChoices.h"
#include "frontend/ExtractionDriver.h"
#include "frontend/ExtractionParameters.h"
#include "frontend/HelpText.h"
#include "frontend/InteractiveFrontEnd.h"
#include "frontend/LocalizedStrings.h"
#include "platform/File.h"
#include "platform/Module.h"
#include "platform/SecureMemory.h"
#include "platform/Text.h"

namespace {

void Print(std::u16string_view text) {
    platform::WriteTerminal(platform::Utf16ToUtf8(text));
}

// A path typed on the terminal, with Tab completion and "~" for the home folder; nothing when the
// user ended the input or pressed Ctrl-C.
std::optional<std::u16string> AskPath(std::string_view prompt) {
    const std::optional<std::string> typed =
        terminal::AskLine(prompt, platform::LineEditing::Paths);
    if (!typed) {
        return std::nullopt;
    }
    return platform::Utf8ToUtf16(platform::ExpandHomeFolder(*typed));
}

}  // namespace

void RunInteractiveFrontEnd() {
    if (!platform::IsInteractiveTerminal()) {
        WriteHelpText();  // no one to ask: show how the stub is used
        return;
    }
    const std::u16string self = platform::ModulePath();
    if (!IsSelfExtractingFile(self)) {
        Print(platform::Utf8ToUtf16(
            "This program carries no archive: " + platform::Utf16ToUtf8(self) +
            " is the bare extraction stub, or its archive was cut off. There is nothing to "
            "extract.\n"));
        return;
    }
    CTerminalFrontEnd frontEnd;
    frontEnd.Run();
}

CTerminalFrontEnd::CTerminalFrontEnd() : progress_(true, std::chrono::milliseconds(0)) {}

void CTerminalFrontEnd::Run() {
    platform::CatchInterrupts();
    target_ = platform::GetModuleDirectory();
    CurrentView.store(this);
    Print(u"Extract archive\n");
    while (!ended_ && AskForExtraction()) {
        RunWorker();
    }
    CurrentView.store(nullptr);
    if (ended_ && result_ != FORMAT_OK) {
        RemoveFoldersLeftEmpty();
    }
}

bool CTerminalFrontEnd::AskForExtraction() {
    for (;;) {
        const std::optional<std::u16string> target =
            AskPath("Extract to [" + platform::Utf16ToUtf8(target_) + "]: ");
        if (!target) {
            return false;
        }
        if (!target->empty()) {
            target_ = *target;
        }
        const std::optional<std::u16string> keyPath =
            AskPath("Private key (empty for a password): ");
        if (!keyPath) {
            return false;
        }
        Zelmarik::SecureU16String password;
        if (keyPath->empty()) {
            std::optional<Zelmarik::SecureU16String> typed = terminal::AskSecret("Password: ");
            if (!typed) {
                return false;
            }
            password = std::move(*typed);
        }
        std::u16string given(password.View());
        const CredentialsOutcome outcome = AcceptCredentials(*keyPath, given);
        platform::SecureWipe(given.data(), given.capacity() * sizeof(char16_t));
        if (outcome == CredentialsOutcome::Accepted) {
            ExtractionParameters.targetPath = ArchiveTargetFolder(target_, platform::ModulePath());
            return true;
        }
        ShowError(LocalizedStrings.GetLocalizedString(outcome == CredentialsOutcome::KeyUnreadable
                                                          ? u"IDS_UNABLE_TO_LOAD_PRIVKEY"
                                                          : u"IDS_USE_PWD_OR_KEY"),
                  LocalizedStrings.GetLocalizedString(u"IDS_ERROR"));
    }
}

void CTerminalFrontEnd::RunWorker() {
    // Made here rather than by the driver, to know what a failed run is to take back; a folder
    // that can't be made fails the run as it would there.
    std::vector<std::u16string> created;
    platform::MakeDirectoryLevels(ExtractionParameters.targetPath, created);
    createdFolders_.insert(createdFolders_.end(), created.begin(), created.end());
    {
        const std::lock_guard hold(lock_);
        running_ = true;
        percent_ = 0;
        status_.clear();
    }
    std::thread worker([this] {
        ExtractionThreadProc();
        const std::lock_guard hold(lock_);
        running_ = false;
        workerDone_.notify_all();
    });
    std::unique_lock hold(lock_);
    while (running_) {
        workerDone_.wait_for(hold, std::chrono::milliseconds(50));
        if (platform::TakeInterrupt()) {
            progress_.Interrupted();
            if (!CancelCurrentExtraction()) {
                ended_ = true;  // Ctrl-C before the archive code started: the front end ends
            }
        }
    }
    hold.unlock();
    worker.join();
}

void CTerminalFrontEnd::RemoveFoldersLeftEmpty() const {
    for (const std::u16string& folder : createdFolders_) {
        platform::RemoveEmptyDirectory(folder);  // one that holds anything stays
    }
}

void CTerminalFrontEnd::ShowProgress(std::uint32_t percent) {
    const std::lock_guard hold(lock_);
    percent_ = percent;
    progress_.Update(percent_, 0, status_);
}

void CTerminalFrontEnd::ShowStatus(const std::u16string& text) {
    const std::lock_guard hold(lock_);
    status_ = text;
    progress_.Update(percent_, 0, status_);
}

void CTerminalFrontEnd::ShowError(const std::u16string& text, const std::u16string& caption) {
    const std::lock_guard hold(lock_);
    progress_.Finish();
    Print(caption + u": " + text + u"\n");
}

ReplaceAnswer CTerminalFrontEnd::AskReplace(const std::u16string& text,
                                            const std::u16string& caption) {
    const std::lock_guard hold(lock_);
    progress_.Finish();
    static constexpr std::string_view kChoices[] = {"yes", "no", "cancel"};
    const std::optional<std::size_t> choice =
        terminal::AskChoice(platform::Utf16ToUtf8(caption + u": " + text + u"\n"), kChoices);
    if (!choice || *choice == 2) {
        return ReplaceAnswer::Cancel;
    }
    return *choice == 0 ? ReplaceAnswer::Yes : ReplaceAnswer::No;
}

void CTerminalFrontEnd::SetControlsBusy(bool enabled, bool) {
    if (enabled) {
        const std::lock_guard hold(lock_);
        Print(u"Try again, or press Ctrl-C to give up.\n");
    }
}

void CTerminalFrontEnd::EndView(FormatResult result) {
    const std::lock_guard hold(lock_);
    ended_ = true;
    result_ = result;
    progress_.Finish();
    if (result == FORMAT_OK) {
        Print(u"Extraction has successfully finished\n");
    } else {
        Print(u"Extraction has failed: " + platform::Utf8ToUtf16(DescribeFormatResult(result)) +
              u"\n");
    }
}
