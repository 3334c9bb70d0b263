#include "tests/frontend/win32/DialogHarness.h"

#include "frontend/ExtractionDriver.h"
#include "frontend/win32/ExtractionDialog.h"

namespace tests {

namespace {

MessageBoxScript* activeScript = nullptr;
PickerScript* activePickers = nullptr;

std::u16string Narrowed(LPCWSTR text) {
    return text == nullptr ? std::u16string()
                           : std::u16string(reinterpret_cast<const char16_t*>(text));
}

}  // namespace

MessageBoxScript::MessageBoxScript() {
    activeScript = this;
    DialogMessageBox.store(Show);
}

MessageBoxScript::~MessageBoxScript() {
    DialogMessageBox.store(MessageBoxW);
    activeScript = nullptr;
}

void MessageBoxScript::Answer(std::vector<int> answers) {
    const std::lock_guard hold(lock_);
    answers_.assign(answers.begin(), answers.end());
}

void MessageBoxScript::BeforeAnswer(std::function<void()> action) {
    const std::lock_guard hold(lock_);
    beforeAnswer_ = std::move(action);
}

std::vector<RecordedBox> MessageBoxScript::Boxes() const {
    const std::lock_guard hold(lock_);
    return boxes_;
}

int WINAPI MessageBoxScript::Show(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) {
    MessageBoxScript& script = *activeScript;
    std::function<void()> action;
    {
        const std::lock_guard hold(script.lock_);
        action = script.beforeAnswer_;
    }
    if (action) {
        action();
    }
    const std::lock_guard hold(script.lock_);
    script.boxes_.push_back({owner, Narrowed(text), Narrowed(caption), type});
    if (script.answers_.empty()) {
        return IDOK;
    }
    const int answer = script.answers_.front();
    script.answers_.pop_front();
    return answer;
}

PickerScript::PickerScript() {
    activePickers = this;
    DialogBrowseForFolder.store(BrowseForFolder);
    DialogOpenFileName.store(OpenFileName);
}

PickerScript::~PickerScript() {
    DialogBrowseForFolder.store(SHBrowseForFolderW);
    DialogOpenFileName.store(GetOpenFileNameW);
    activePickers = nullptr;
}

// The chosen folder as the shell's item list, in the shell's allocator as the real picker's.
PIDLIST_ABSOLUTE WINAPI PickerScript::BrowseForFolder(LPBROWSEINFOW) {
    PickerScript& self = *activePickers;
    ++self.folderCalls_;
    PIDLIST_ABSOLUTE chosen = nullptr;
    if (!self.choice_.empty() &&
        FAILED(SHParseDisplayName(reinterpret_cast<const wchar_t*>(self.choice_.c_str()), nullptr,
                                  &chosen, 0, nullptr))) {
        return nullptr;
    }
    return chosen;
}

BOOL WINAPI PickerScript::OpenFileName(LPOPENFILENAMEW request) {
    PickerScript& self = *activePickers;
    ++self.fileCalls_;
    self.fileOwner_ = request->hwndOwner;
    if (self.choice_.empty() || self.choice_.size() >= request->nMaxFile) {
        return FALSE;
    }
    self.choice_.copy(reinterpret_cast<char16_t*>(request->lpstrFile), self.choice_.size());
    request->lpstrFile[self.choice_.size()] = L'\0';
    return TRUE;
}

bool PumpUntil(const std::function<bool()>& done, DWORD milliseconds) {
    const ULONGLONG deadline = GetTickCount64() + milliseconds;
    while (!done()) {
        if (GetTickCount64() > deadline) {
            return false;
        }
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
    }
    return true;
}

DialogUnderTest::DialogUnderTest(WORD templateId) {
    RegisterDialogControls();
    dialog_ = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(templateId), nullptr,
                                 ExtractionDialogProc, 0);
    ShowWindow(dialog_, SW_SHOW);
}

DialogUnderTest::~DialogUnderTest() {
    PumpUntil([] { return CurrentProgress.load() == nullptr; });
    DestroyWindow(dialog_);
}

void DialogUnderTest::Type(int id, const std::u16string& text) const {
    SetDlgItemTextW(dialog_, id, reinterpret_cast<const wchar_t*>(text.c_str()));
}

std::u16string DialogUnderTest::Text(int id) const {
    wchar_t buffer[4096] = L"";
    const UINT length = GetDlgItemTextW(dialog_, id, buffer, 4096);
    return std::u16string(reinterpret_cast<const char16_t*>(buffer), length);
}

void DialogUnderTest::Click(int id) const {
    SendMessageW(dialog_, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                 reinterpret_cast<LPARAM>(Item(id)));
}

RECT DialogUnderTest::Frame() const {
    RECT frame{};
    GetWindowRect(dialog_, &frame);
    return frame;
}

int DialogUnderTest::Height() const {
    const RECT frame = Frame();
    return frame.bottom - frame.top;
}

}  // namespace tests
