#pragma once
// The stub's interactive front end on a terminal: the same states, texts and questions as the
// Windows dialog, as prompts.

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>

#include "frontend/ExtractionView.h"

class CTerminalFrontEnd : public IExtractionView {
public:
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
    void DrawProgressLine();

    std::mutex lock_;  // the screen and the fields below
    std::condition_variable workerDone_;
    bool running_ = false;
    bool ended_ = false;
    std::uint32_t percent_ = 0;
    std::u16string status_;
    std::u16string target_;
};
