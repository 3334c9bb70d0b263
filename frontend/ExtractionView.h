#pragma once
// What the extraction driver needs from an interactive front end: the dialog on Windows, the
// terminal on Linux. All calls may come from the extraction worker.

#include <cstdint>
#include <string>

#include "archive/Archive.h"

enum class ReplaceAnswer { Yes, No, Cancel };

class IExtractionView {
public:
    virtual ~IExtractionView() = default;
    // Progress of the file data, 0 to 100.
    virtual void ShowProgress(std::uint32_t percent) = 0;
    // The status line: the file that was last completed.
    virtual void ShowStatus(const std::u16string& text) = 0;
    // An error box with its caption; returns when the user has seen it.
    virtual void ShowError(const std::u16string& text, const std::u16string& caption) = 0;
    // The question about an existing file, once for each such file.
    virtual ReplaceAnswer AskReplace(const std::u16string& text, const std::u16string& caption) = 0;
    // Input fields enabled or not, progress shown or not; Cancel stays available.
    virtual void SetControlsBusy(bool enabled, bool showProgress) = 0;
    // The extraction ran through the archive code with this result: the front end ends.
    virtual void EndView(FormatResult result) = 0;
};
