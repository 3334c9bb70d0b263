#include "frontend/posix/TerminalFrontEnd.h"

#include <chrono>
#include <thread>

#include "Common/Common/SecureBuffer.h"
#include "archive/FileFormatSFX.h"
#include "frontend/ExtractionChoices.h"
#include "frontend/ExtractionDriver.h"
#include "frontend/ExtractionParameters.h"
#include "frontend/HelpText.h"
#include "frontend/InteractiveFrontEnd.h"
#include "frontend/LocalizedStrings.h"
#include "platform/Console.h"
#include "platform/Module.h"
#include "platform/Terminal.h"
#include "platform/Text.h"

namespace {

void Print(std::u16string_view text) {
    platform::WriteStandardOutput(platform::Utf16ToUtf8(text));
}
void Print(std::string_view text) {
    platform::WriteStandardOutput(text);
}

// The end of a prompt that the user ended or left with Ctrl-C.
bool Abandoned() {
    platform::TakeInterrupt();
    Print("\n");
    return false;
}

// Asks one question; false when the user ended the input or pressed Ctrl-C.
bool Prompt(std::string_view question, std::u16string& answer) {
    Print(question);
    std::string line;
    if (!platform::ReadTerminalLine(line, true)) {
        return Abandoned();
    }
    answer = platform::Utf8ToUtf16(line);
    return true;
}

// Asks for a secret without echo, into wiping memory only; the longest line taken is a
// kilobyte, more than any password the archive can hold.
bool PromptSecret(std::string_view question, Zelmarik::SecureU16String& answer) {
    Print(question);
    Zelmarik::SecureVector<char> line(1024);
    std::size_t length = 0;
    if (!platform::ReadSecretLine(line, length)) {
        return Abandoned();
    }
    answer = Zelmarik::SecureUtf16FromUtf8(std::string_view(line.data(), length));
    return true;
}

}  // namespace

void RunInteractiveFrontEnd() {
    if (!platform::IsInteractiveTerminal()) {
        WriteHelpText();  // no one to ask: show how the stub is used
        return;
    }
    CTerminalFrontEnd frontEnd;
    frontEnd.Run();
}

void CTerminalFrontEnd::Run() {
    platform::CatchInterrupts();
    target_ = GetModuleDirectory();
    CurrentView.store(this);
    Print("Extract archive\n");
    while (!ended_ && AskForExtraction()) {
        RunWorker();
    }
    CurrentView.store(nullptr);
}

bool CTerminalFrontEnd::AskForExtraction() {
    for (;;) {
        std::u16string target;
        if (!Prompt("Extract to [" + platform::Utf16ToUtf8(target_) + "]: ", target)) {
            return false;
        }
        if (!target.empty()) {
            target_ = target;
        }
        std::u16string keyPath;
        Zelmarik::SecureU16String password;
        if (!Prompt("Private key (empty for a password): ", keyPath)) {
            return false;
        }
        if (keyPath.empty() && !PromptSecret("Password: ", password)) {
            return false;
        }
        const CredentialsOutcome outcome = AcceptCredentials(keyPath, password);
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
        if (platform::TakeInterrupt() && !CancelCurrentExtraction()) {
            ended_ = true;  // Ctrl-C before the archive code started: the front end ends
        }
    }
    hold.unlock();
    worker.join();
}

void CTerminalFrontEnd::ShowProgress(std::uint32_t percent) {
    const std::lock_guard hold(lock_);
    percent_ = percent;
    DrawProgressLine();
}

void CTerminalFrontEnd::ShowStatus(const std::u16string& text) {
    const std::lock_guard hold(lock_);
    status_ = text;
    DrawProgressLine();
}

void CTerminalFrontEnd::DrawProgressLine() {
    constexpr int kBarWidth = 20;
    const int filled = static_cast<int>(percent_ > 100 ? 100 : percent_) * kBarWidth / 100;
    std::string line = "\r[" + std::string(static_cast<std::size_t>(filled), '#') +
                       std::string(static_cast<std::size_t>(kBarWidth - filled), '.') + "] " +
                       std::to_string(percent_) + "%  ";
    const std::size_t room = static_cast<std::size_t>(platform::TerminalColumns()) - 1;
    std::u16string status = status_;
    if (line.size() + status.size() > room && room > line.size() + 3) {
        // Keep the end of a long path, where the file name stands.
        status = u"..." + status.substr(status.size() - (room - line.size() - 3));
    }
    line += platform::Utf16ToUtf8(status);
    line += "\x1b[K";  // clear what a longer line left
    Print(line);
}

void CTerminalFrontEnd::ShowError(const std::u16string& text, const std::u16string& caption) {
    const std::lock_guard hold(lock_);
    Print(u"\n" + caption + u": " + text + u"\n");
}

ReplaceAnswer CTerminalFrontEnd::AskReplace(const std::u16string& text,
                                            const std::u16string& caption) {
    std::lock_guard hold(lock_);
    for (;;) {
        Print(u"\n" + caption + u": " + text + u"\n[y]es, [n]o, [c]ancel? ");
        std::string answer;
        if (!platform::ReadTerminalLine(answer, true)) {
            return ReplaceAnswer::Cancel;
        }
        if (answer == "y" || answer == "Y" || answer == "yes") {
            return ReplaceAnswer::Yes;
        }
        if (answer == "n" || answer == "N" || answer == "no") {
            return ReplaceAnswer::No;
        }
        if (answer == "c" || answer == "C" || answer == "cancel") {
            return ReplaceAnswer::Cancel;
        }
    }
}

void CTerminalFrontEnd::SetControlsBusy(bool enabled, bool) {
    if (enabled) {
        const std::lock_guard hold(lock_);
        Print("Try again, or press Ctrl-C to give up.\n");
    }
}

void CTerminalFrontEnd::EndView(FormatResult result) {
    const std::lock_guard hold(lock_);
    ended_ = true;
    Print(result == FORMAT_OK ? "\nExtraction has successfully finished\n"
                              : "\nExtraction has failed\n");
}
