#pragma once
// Drives the extraction dialog from a test: the dialog made from the test program's own
// resources, its message boxes answered by a script, and the test thread pumping messages
// while the worker runs.

#include <windows.h>

#include <commdlg.h>
#include <shlobj.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace tests {

struct RecordedBox {
    HWND owner = nullptr;
    std::u16string text;
    std::u16string caption;
    UINT type = 0;
};

// Takes the place of the user for every message box while it exists.
class MessageBoxScript {
public:
    MessageBoxScript();
    ~MessageBoxScript();
    MessageBoxScript(const MessageBoxScript&) = delete;
    MessageBoxScript& operator=(const MessageBoxScript&) = delete;

    // The answers of the next boxes, in order; IDOK once they are used up.
    void Answer(std::vector<int> answers);
    // Runs on the thread that shows a box, before it is answered.
    void BeforeAnswer(std::function<void()> action);
    std::vector<RecordedBox> Boxes() const;

private:
    static int WINAPI Show(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type);

    mutable std::mutex lock_;
    std::deque<int> answers_;
    std::function<void()> beforeAnswer_;
    std::vector<RecordedBox> boxes_;
};

// Takes the place of the user in the folder and key file pickers while it exists. Each picker
// returns the path of Choose(), or reports a cancelled choice while that path is empty.
class PickerScript {
public:
    PickerScript();
    ~PickerScript();
    PickerScript(const PickerScript&) = delete;
    PickerScript& operator=(const PickerScript&) = delete;

    void Choose(std::u16string path) { choice_ = std::move(path); }

    int FolderCalls() const { return folderCalls_; }
    int FileCalls() const { return fileCalls_; }
    // The window that owned the last key file picker.
    HWND LastFileOwner() const { return fileOwner_; }

private:
    static PIDLIST_ABSOLUTE WINAPI BrowseForFolder(LPBROWSEINFOW request);
    static BOOL WINAPI OpenFileName(LPOPENFILENAMEW request);

    std::u16string choice_;
    int folderCalls_ = 0;
    int fileCalls_ = 0;
    HWND fileOwner_ = nullptr;
};

// Processes the test thread's messages until `done` holds; false when time ran out.
bool PumpUntil(const std::function<bool()>& done, DWORD milliseconds = 60000);

// The dialog of one template as a modeless window of the test thread.
class DialogUnderTest {
public:
    explicit DialogUnderTest(WORD templateId = 129);
    // Waits for a running extraction to end, then destroys the window.
    ~DialogUnderTest();
    DialogUnderTest(const DialogUnderTest&) = delete;
    DialogUnderTest& operator=(const DialogUnderTest&) = delete;

    HWND Handle() const { return dialog_; }
    HWND Item(int id) const { return GetDlgItem(dialog_, id); }
    void Type(int id, const std::u16string& text) const;
    std::u16string Text(int id) const;
    void Click(int id) const;
    bool Enabled(int id) const { return IsWindowEnabled(Item(id)) != FALSE; }
    bool Shown(int id) const { return (GetWindowLongW(Item(id), GWL_STYLE) & WS_VISIBLE) != 0; }
    RECT Frame() const;
    int Height() const;
    // EndDialog hides the window: the dialog has ended.
    bool Ended() const { return IsWindowVisible(dialog_) == FALSE; }

private:
    HWND dialog_ = nullptr;
};

}  // namespace tests
