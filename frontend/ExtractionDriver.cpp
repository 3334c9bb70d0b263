#include "frontend/ExtractionDriver.h"

#include <mutex>

#include "archive/Archive.h"
#include "frontend/ExtractionParameters.h"
#include "frontend/LocalizedStrings.h"
#include "platform/File.h"

std::atomic<IExtractionView*> CurrentView{nullptr};
std::atomic<ProgressContext*> CurrentProgress{nullptr};

namespace {

// Keeps a Cancel from reaching a context that the worker is freeing.
std::mutex progressLifetime;

}  // namespace

namespace {

bool IsSeparator(char16_t c) {
    return c == u'/' || c == u'\\';
}

bool Created(platform::ErrorCode error) {
    return error == platform::kErrorSuccess || error == platform::kErrorAlreadyExists;
}

// Every separator in the platform's own form.
std::u16string NativeSeparators(std::u16string path) {
    for (char16_t& c : path) {
        if (IsSeparator(c)) {
            c = platform::kPathSeparator;
        }
    }
    return path;
}

}  // namespace

bool CreateFolderPath(const std::u16string& original) {
    std::u16string path = NativeSeparators(original);
    if (path.empty()) {
        return true;
    }
    if (path.back() == platform::kPathSeparator) {
        const bool driveRoot = path.size() == 3 && path[1] == u':';
        if (driveRoot || path.size() == 1) {
            return true;
        }
        path.pop_back();
    }
    if (Created(platform::MakeDirectory(path))) {
        return true;
    }
    // Create the levels from the top, past a drive ("C:\") or, where the separator is a
    // backslash, a leading one ("\\server\share").
    constexpr bool kBackslashPaths = platform::kPathSeparator == u'\\';
    std::size_t position = 0;
    if ((path.size() > 1 && path[1] == u':') ||
        (kBackslashPaths && path[0] == platform::kPathSeparator)) {
        position = path.find(platform::kPathSeparator, 2);
        if (position == std::u16string::npos) {
            return true;
        }
    }
    for (;;) {
        if (position >= path.size()) {
            return true;
        }
        const std::size_t next = path.find(platform::kPathSeparator, position + 1);
        if (!Created(platform::MakeDirectory(path.substr(0, next)))) {
            return false;
        }
        if (next == std::u16string::npos) {
            return true;
        }
        position = next;
    }
}

bool RunExtraction(FormatResult* formatResult) {
    const CExtractionParameters& parameters = ExtractionParameters;
    if (!parameters.keyGiven && !parameters.passwordGiven) {
        return false;
    }
    if (platform::GetFileSizeOf(parameters.sourcePath) == 0) {
        return false;
    }
    if (platform::File probe;
        probe.Open(parameters.sourcePath, platform::OpenMode::Read) != platform::kErrorSuccess) {
        return false;
    }

    ArchiveExtractRequest request;
    request.sourcePath = parameters.sourcePath;
    request.targetPath = parameters.targetPath;
    request.password = parameters.password;
    request.keyGiven = parameters.keyGiven;
    request.passwordGiven = parameters.passwordGiven;
    request.securityKey = parameters.securityKey;
    request.mayReplaceSource = true;  // a newer version of the stub may take its place

    DCCArchiveUserSettings settings;
    if (parameters.consoleMode) {
        settings.overwriteMode = OVERWRITE_REPLACE;  // nothing is asked, nothing reports
    } else {
        // The worker frees the context when the run is over.
        if (CurrentProgress.load() == nullptr) {
            auto* created = new ProgressContext;
            created->view = CurrentView.load();
            CurrentProgress.store(created);
        }
        ProgressContext* progress = CurrentProgress.load();
        settings.overwriteMode = OVERWRITE_ASK;
        for (const std::uint32_t id :
             {CALLBACK_PROGRESS, CALLBACK_FILE_DONE, CALLBACK_FILE_EXISTS}) {
            settings.callbackContexts[id] = progress;
        }
        settings.onProgress = ReportProgress;
        settings.onFileDone = ReportFileDone;
        settings.onFileExists = AskReplaceFile;
        settings.cancelFlag = &progress->cancelled;
    }

    CreateFolderPath(parameters.targetPath);  // a failure shows up as result 8 later
    DCCFileFormatSFX format;
    const FormatResult result = format.ExtractArchive(&request, &settings);
    if (formatResult != nullptr) {
        *formatResult = result;
    }
    return result == FORMAT_OK;
}

void ExtractionThreadProc() {
    FormatResult result = FORMAT_FAILED;
    const bool extracted = RunExtraction(&result);
    if (ProgressContext* progress = CurrentProgress.load(); progress != nullptr) {
        // The archive code ran: the front end ends, whatever the outcome.
        if (progress->view != nullptr) {
            progress->view->EndView(result);
        }
        const std::lock_guard hold(progressLifetime);
        CurrentProgress.store(nullptr);
        delete progress;
        return;
    }
    IExtractionView* view = CurrentView.load();
    if (!extracted && view != nullptr) {
        view->ShowError(LocalizedStrings.GetLocalizedString(u"IDS_DECOMPRESS_FAILED"),
                        LocalizedStrings.GetLocalizedString(u"IDS_ERROR"));
        view->SetControlsBusy(true, false);
    }
}

bool CancelCurrentExtraction() {
    const std::lock_guard hold(progressLifetime);
    ProgressContext* progress = CurrentProgress.load();
    if (progress == nullptr) {
        return false;
    }
    progress->cancelled.store(1);
    return true;
}

void ReportProgress(std::uint32_t percent, void* context) {
    const auto* progress = static_cast<ProgressContext*>(context);
    if (progress != nullptr && progress->view != nullptr) {
        progress->view->ShowProgress(percent);
    }
}

void ReportFileDone(const std::u16string* path, void* context) {
    const auto* progress = static_cast<ProgressContext*>(context);
    if (progress == nullptr) {
        return;
    }
    std::u16string text = LocalizedStrings.GetLocalizedString(u"IDS_DECOMPRESSING_FILE");
    ReplaceFilenameMarker(text, path);
    if (progress->view != nullptr && !text.empty()) {
        text.pop_back();  // the closing "!" of every language
        progress->view->ShowStatus(text);
    }
}

OverwriteMode AskReplaceFile(const std::u16string* path, bool*, void*) {
    IExtractionView* view = CurrentView.load();
    if (view == nullptr) {
        return OVERWRITE_SKIP;
    }
    std::u16string text = LocalizedStrings.GetLocalizedString(u"IDS_REPLACE_FILE") + u"\r\n";
    if (path != nullptr) {
        text += *path;
    }
    switch (view->AskReplace(text, LocalizedStrings.GetLocalizedString(u"IDS_QUESTION"))) {
        case ReplaceAnswer::Yes:
            return OVERWRITE_REPLACE;
        case ReplaceAnswer::Cancel:
            return OVERWRITE_CANCEL;
        case ReplaceAnswer::No:
            break;
    }
    return OVERWRITE_SKIP;
}
