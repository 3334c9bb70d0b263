#pragma once
// The stub's interactive front end on a terminal: the same states, texts and questions as the
// Windows dialog, as prompts.

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "frontend/ExtractionView.h"
#include "frontend/terminal/TerminalUi.h"

class CTerminalFrontEnd : public IExtractionView {
public:
    CTerminalFrontEnd();

    // Runs until the extraction ended or the user gave up.
    void Run();

    void ShowProgress(std::uint32_t percent) override;
    void ShowStatus(const std::u16string& text) override;
    void ShowError(const std::u16string& text, const std::u16string& caption) override;
    ReplaceAnswer AskReplace(const std::u16string& text, const std::u16string& caption) override;
    void SetControlsBusy(bool enabled, bool showProgress) override;
    void EndView(FormatResult result) override;

private:
    // Asks for target and credentials until they pass; false when the user gave up.
    bool AskForExtraction();
    // Runs the worker and waits for it, passing Ctrl-C on as Cancel.
    void RunWorker();
    // After a failed run: the folders that it created and left empty go again.
    void RemoveFoldersLeftEmpty() const;

    std::mutex lock_;  // the screen and the fields below
    std::condition_variable workerDone_;
    bool running_ = false;
    bool ended_ = false;
    FormatResult result_ = FORMAT_OK;
    std::uint32_t percent_ = 0;
    std::u16string status_;
    terminal::ProgressLine progress_;
    std::u16string target_;
    // The levels of the extraction folder that the runs made, deepest first.
    std::vector<std::u16string> createdFolders_;
};
