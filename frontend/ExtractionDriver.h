#pragma once
// Joins the front end to the archive code: one call of the self-extracting format's
// ExtractArchive with what ExtractionParameters holds.

#include <atomic>
#include <cstdint>
#include <string>

#include "archive/Archive.h"
#include "frontend/ExtractionView.h"

// Joins the archive code to the interactive front end for one extraction.
struct ProgressContext {
    std::atomic<std::uint8_t> cancelled{0};  // set by Cancel; the settings' cancelFlag
    IExtractionView* view = nullptr;         // null on the command line path
};

// The interactive front end in force; null on the command line path.
extern std::atomic<IExtractionView*> CurrentView;
// The context of the running extraction; null when there is none.
extern std::atomic<ProgressContext*> CurrentProgress;

// True when the archive was extracted. Without a key or password, or with a source that is
// missing, empty or unreadable, it returns false before the archive code runs; otherwise the
// archive code's result goes to `formatResult` when it is given.
bool RunExtraction(FormatResult* formatResult = nullptr);

// Cancel of the interactive front end: true when an extraction was running and now stops at
// its next check; false when none runs, and the front end is to end instead.
bool CancelCurrentExtraction();

// The worker of the interactive path: runs the extraction, then ends the view, or after an
// early failure shows the error and gives the controls back.
void ExtractionThreadProc();

// Creates a folder and every missing level above it; true when the folder exists afterwards
// or the path is empty. Either separator is accepted.
bool CreateFolderPath(const std::u16string& path);

// The archive code's callbacks on the interactive path; the context is a ProgressContext.
void ReportProgress(std::uint32_t percent, void* context);
void ReportFileDone(const std::u16string* path, void* context);
OverwriteMode AskReplaceFile(const std::u16string* path, bool* flag, void* context);
