#pragma once
// A program started as its own process, and its windows seen from outside as a user sees them:
// found by process, filled and pressed through messages. Every wait has a deadline.

#include <windows.h>

#include <string>
#include <vector>

namespace tests {

class StubProcess {
public:
    // Starts `path` without arguments in `folder`; Started() tells whether it runs.
    StubProcess(const std::u16string& path, const std::u16string& folder);
    // A process still running is killed.
    ~StubProcess();
    StubProcess(const StubProcess&) = delete;
    StubProcess& operator=(const StubProcess&) = delete;

    bool Started() const { return process_ != nullptr; }
    // The first visible dialog-class window of the process other than `except` (a dialog box or
    // a message box); null when none came before the deadline or the process ended.
    HWND WaitForWindow(HWND except, DWORD milliseconds) const;
    // True when the process ended before the deadline.
    bool WaitForExit(DWORD milliseconds) const;
    DWORD ExitCode() const;

private:
    std::vector<HWND> VisibleDialogs() const;

    HANDLE process_ = nullptr;
    DWORD id_ = 0;
};

// The window's controls through messages that give up after a while on a hung receiver.
bool SetControlText(HWND window, int id, const std::u16string& text);
std::u16string ControlText(HWND window, int id);
std::u16string WindowCaption(HWND window);
// Presses a button as a click would; a disabled button does nothing.
void PressButton(HWND window, int id);

}  // namespace tests
