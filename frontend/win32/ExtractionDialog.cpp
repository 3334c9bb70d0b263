#include "frontend/win32/ExtractionDialog.h"

#include <commctrl.h>

#include <string>

#include "Common/Common/SecureBuffer.h"
#include "frontend/ExtractionChoices.h"
#include "frontend/ExtractionDriver.h"
#include "frontend/ExtractionParameters.h"
#include "frontend/LocalizedStrings.h"
#include "frontend/resources/DialogControls.h"
#include "platform/Module.h"
#include "platform/SecureMemory.h"

std::atomic<HWND> CurrentDialog{nullptr};
std::atomic<MessageBoxFunction> DialogMessageBox{MessageBoxW};
std::atomic<BrowseForFolderFunction> DialogBrowseForFolder{SHBrowseForFolderW};
std::atomic<OpenFileNameFunction> DialogOpenFileName{GetOpenFileNameW};

namespace {

// Height of the rows below the buttons, progress bar and status line, in pixels: the dialog
// opens without them and grows by them once, at the first extraction.
constexpr int kProgressRowsHeight = 60;
// Edit buffers in characters, the terminator included.
constexpr int kCredentialCapacity = 1024;
constexpr int kTargetCapacity = 2048;
constexpr DWORD kKeyFileCapacity = 256;

// The dialog has grown to its full height.
bool expanded = false;

const wchar_t* Wide(const std::u16string& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

int ShowBox(const std::u16string& text, const std::u16string& caption, UINT type) {
    return DialogMessageBox.load()(CurrentDialog.load(), Wide(text), Wide(caption), type);
}

void ShowErrorBox(const char16_t* key) {
    ShowBox(LocalizedStrings.GetLocalizedString(key),
            LocalizedStrings.GetLocalizedString(u"IDS_ERROR"), MB_ICONERROR);
}

// The text of an edit, cut to capacity - 1 characters. The buffer is wiped, as it may hold
// the password.
std::u16string ControlText(HWND dialog, int id, int capacity) {
    Zelmarik::SecureVector<wchar_t> buffer(static_cast<std::size_t>(capacity));
    const UINT length = GetDlgItemTextW(dialog, id, buffer.data(), capacity);
    return std::u16string(reinterpret_cast<const char16_t*>(buffer.data()), length);
}

bool HasText(HWND dialog, int id) {
    return GetWindowTextLengthW(GetDlgItem(dialog, id)) > 0;
}

void MoveBy(HWND dialog, int heightChange) {
    RECT frame{};
    GetWindowRect(dialog, &frame);
    MoveWindow(dialog, frame.left, frame.top, frame.right - frame.left,
               frame.bottom - frame.top + heightChange, TRUE);
}

// The dialog's side of the extraction driver; every call may come from the worker.
class CDialogView final : public IExtractionView {
public:
    void ShowProgress(std::uint32_t percent) override {
        SendDlgItemMessageW(CurrentDialog.load(), IDC_PROGRESS_BAR, PBM_SETPOS, percent, 0);
    }
    void ShowStatus(const std::u16string& text) override {
        SetDlgItemTextW(CurrentDialog.load(), IDC_STATUS_LINE, Wide(text));
    }
    void ShowError(const std::u16string& text, const std::u16string& caption) override {
        ShowBox(text, caption, MB_ICONERROR);
    }
    ReplaceAnswer AskReplace(const std::u16string& text, const std::u16string& caption) override {
        switch (ShowBox(text, caption, MB_YESNOCANCEL | MB_ICONQUESTION)) {
            case IDYES:
                return ReplaceAnswer::Yes;
            case IDCANCEL:
                return ReplaceAnswer::Cancel;
            default:
                return ReplaceAnswer::No;
        }
    }
    void SetControlsBusy(bool enabled, bool showProgress) override {
        ::SetControlsBusy(enabled, showProgress);
    }
    void EndView(FormatResult result) override {
        // The user is told why the dialog goes away, unless the user stopped it.
        if (result != FORMAT_OK && result != FORMAT_CANCELLED) {
            ShowErrorBox(u"IDS_DECOMPRESS_FAILED");
        }
        SendMessageW(CurrentDialog.load(), kExtractionEnded, 0, 0);
    }
};

CDialogView dialogView;

DWORD WINAPI ExtractionWorker(void*) {
    ExtractionThreadProc();
    return 0;
}

void OnInitDialog(HWND dialog) {
    // Centred with its full height, then shown without the progress rows.
    RECT frame{};
    GetWindowRect(dialog, &frame);
    const int width = frame.right - frame.left;
    const int height = frame.bottom - frame.top;
    MoveWindow(dialog, (GetSystemMetrics(SM_CXSCREEN) - width) / 2,
               (GetSystemMetrics(SM_CYSCREEN) - height) / 2, width, height - kProgressRowsHeight,
               TRUE);
    expanded = false;
    SetDlgItemTextW(dialog, IDC_TARGET_FOLDER, Wide(platform::GetModuleDirectory()));
    SetFocus(GetDlgItem(dialog, IDC_PASSWORD));
    CurrentDialog.store(dialog);
    CurrentView.store(&dialogView);
}

void BrowseForTarget(HWND dialog) {
    BROWSEINFOW request{};
    PIDLIST_ABSOLUTE chosen = DialogBrowseForFolder.load()(&request);
    if (chosen == nullptr) {
        return;
    }
    wchar_t path[MAX_PATH] = L"";
    if (SHGetPathFromIDListW(chosen, path)) {
        SetDlgItemTextW(dialog, IDC_TARGET_FOLDER, path);
    }
    IMalloc* allocator = nullptr;
    if (SUCCEEDED(SHGetMalloc(&allocator))) {
        allocator->Free(chosen);
        allocator->Release();
    }
}

void BrowseForKey(HWND dialog) {
    wchar_t path[kKeyFileCapacity] = L"";
    OPENFILENAMEW request{};
    request.lStructSize = sizeof(request);
    request.hwndOwner = dialog;
    request.lpstrFilter = L"*.privkey\0*.privkey\0";
    request.lpstrFile = path;
    request.nMaxFile = kKeyFileCapacity;
    request.lpstrDefExt = L"privkey";
    request.Flags = OFN_FILEMUSTEXIST;
    if (DialogOpenFileName.load()(&request)) {
        SetDlgItemTextW(dialog, IDC_KEY_PATH, path);  // raises the change notification
    }
}

// Password and key path exclude each other; emptying one frees the other.
void OnCredentialChanged(HWND dialog) {
    const bool passwordTyped = HasText(dialog, IDC_PASSWORD);
    const bool keyPathTyped = HasText(dialog, IDC_KEY_PATH);
    EnableWindow(GetDlgItem(dialog, IDC_PASSWORD), !keyPathTyped);
    EnableWindow(GetDlgItem(dialog, IDC_KEY_PATH), !passwordTyped);
    EnableWindow(GetDlgItem(dialog, IDC_BROWSE_KEY), !passwordTyped);
}

void OnExtract(HWND dialog) {
    const std::u16string target = ControlText(dialog, IDC_TARGET_FOLDER, kTargetCapacity);
    const std::u16string keyPath = ControlText(dialog, IDC_KEY_PATH, kCredentialCapacity);
    std::u16string password = ControlText(dialog, IDC_PASSWORD, kCredentialCapacity);
    const CredentialsOutcome outcome = AcceptCredentials(keyPath, password);
    platform::SecureWipe(password.data(), password.size() * sizeof(char16_t));
    if (outcome != CredentialsOutcome::Accepted) {
        ShowErrorBox(outcome == CredentialsOutcome::KeyUnreadable ? u"IDS_UNABLE_TO_LOAD_PRIVKEY"
                                                                  : u"IDS_USE_PWD_OR_KEY");
        return;
    }
    ExtractionParameters.targetPath = ArchiveTargetFolder(target, platform::ModulePath());

    // The dialog is in its running state before the worker can fail early and give the
    // controls back, so that such a failure always leaves it open.
    if (!expanded) {
        MoveBy(dialog, kProgressRowsHeight);
        expanded = true;
    }
    SendDlgItemMessageW(dialog, IDC_PROGRESS_BAR, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
    SetControlsBusy(false, true);
    const HANDLE worker = CreateThread(nullptr, 0, ExtractionWorker, nullptr, 0, nullptr);
    if (worker == nullptr) {
        SetControlsBusy(true, false);
        ShowErrorBox(u"IDS_DECOMPRESS_FAILED");
        return;
    }
    CloseHandle(worker);  // nobody waits for it
}

void OnCommand(HWND dialog, int id, int notification) {
    switch (id) {
        case IDC_BROWSE_FOLDER:
            BrowseForTarget(dialog);
            break;
        case IDC_BROWSE_KEY:
            BrowseForKey(dialog);
            break;
        case IDC_PASSWORD:
        case IDC_KEY_PATH:
            if (notification == EN_CHANGE) {
                OnCredentialChanged(dialog);
            }
            break;
        case IDC_EXTRACT:
            OnExtract(dialog);
            break;
        case IDC_CANCEL_EXTRACTION:
            // While the archive code runs, Cancel stops it and the worker ends the dialog.
            if (!CancelCurrentExtraction()) {
                EndDialog(dialog, 0);
            }
            break;
        default:
            break;  // Escape's IDCANCEL among them: only the Cancel button cancels
    }
}

}  // namespace

bool RegisterDialogControls() {
    INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_PROGRESS_CLASS | ICC_STANDARD_CLASSES};
    return InitCommonControlsEx(&classes) != FALSE;
}

bool RunExtractionDialog(HINSTANCE instance, WORD templateId) {
    RegisterDialogControls();
    return DialogBoxParamW(instance, MAKEINTRESOURCEW(templateId), nullptr, ExtractionDialogProc,
                           0) != -1;
}

INT_PTR CALLBACK ExtractionDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            OnInitDialog(dialog);
            return FALSE;  // the focus is set already
        case WM_COMMAND:
            OnCommand(dialog, LOWORD(wParam), HIWORD(wParam));
            return TRUE;
        case WM_CLOSE:
        case kEndDialogRequest:
        case kExtractionEnded:
            EndDialog(dialog, 0);
            return FALSE;
        default:
            return FALSE;
    }
}

void SetControlsBusy(bool enabled, bool showProgress) {
    const HWND dialog = CurrentDialog.load();
    if (dialog == nullptr) {
        return;
    }
    for (const int id : {IDC_TARGET_FOLDER, IDC_BROWSE_FOLDER, IDC_PASSWORD, IDC_KEY_PATH,
                         IDC_BROWSE_KEY, IDC_EXTRACT}) {
        if (const HWND control = GetDlgItem(dialog, id); control != nullptr) {
            EnableWindow(control, enabled);
        }
    }
    ShowWindow(GetDlgItem(dialog, IDC_PROGRESS_BAR), showProgress ? SW_SHOW : SW_HIDE);
}
