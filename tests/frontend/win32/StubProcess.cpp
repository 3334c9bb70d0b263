#include "tests/frontend/win32/StubProcess.h"

#include <algorithm>

namespace tests {

namespace {

// How long a message to another process may take before it counts as hung.
constexpr UINT kMessageTimeout = 10000;
constexpr UINT kPollInterval = 50;

const wchar_t* Wide(const std::u16string& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

bool IsDialogClass(HWND window) {
    wchar_t name[16] = L"";
    GetClassNameW(window, name, 16);
    return wcscmp(name, L"#32770") == 0;
}

std::u16string TextOf(HWND window) {
    if (window == nullptr) {
        return {};
    }
    wchar_t buffer[4096] = L"";
    DWORD_PTR length = 0;
    if (SendMessageTimeoutW(window, WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(buffer),
                            SMTO_ABORTIFHUNG, kMessageTimeout, &length) == 0) {
        return {};
    }
    return std::u16string(reinterpret_cast<const char16_t*>(buffer),
                          std::min<DWORD_PTR>(length, 4095));
}

struct ProcessWindows {
    DWORD process;
    std::vector<HWND> found;
};

BOOL CALLBACK CollectVisibleDialog(HWND window, LPARAM context) {
    auto& search = *reinterpret_cast<ProcessWindows*>(context);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner == search.process && IsWindowVisible(window) && IsDialogClass(window)) {
        search.found.push_back(window);
    }
    return TRUE;
}

}  // namespace

StubProcess::StubProcess(const std::u16string& path, const std::u16string& folder) {
    std::u16string commandLine = u"\"" + path + u"\"";
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    if (CreateProcessW(Wide(path), reinterpret_cast<wchar_t*>(commandLine.data()), nullptr, nullptr,
                       FALSE, 0, nullptr, Wide(folder), &startup, &started)) {
        CloseHandle(started.hThread);
        process_ = started.hProcess;
        id_ = started.dwProcessId;
    }
}

StubProcess::~StubProcess() {
    if (process_ == nullptr) {
        return;
    }
    if (!WaitForExit(0)) {
        TerminateProcess(process_, 1);
        WaitForSingleObject(process_, 5000);
    }
    CloseHandle(process_);
}

std::vector<HWND> StubProcess::VisibleDialogs() const {
    ProcessWindows search{id_, {}};
    EnumWindows(CollectVisibleDialog, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND StubProcess::WaitForWindow(HWND except, DWORD milliseconds) const {
    const ULONGLONG deadline = GetTickCount64() + milliseconds;
    while (process_ != nullptr && !WaitForExit(0)) {
        for (const HWND window : VisibleDialogs()) {
            if (window != except) {
                return window;
            }
        }
        if (GetTickCount64() > deadline) {
            break;
        }
        Sleep(kPollInterval);
    }
    return nullptr;
}

bool StubProcess::WaitForExit(DWORD milliseconds) const {
    return process_ != nullptr && WaitForSingleObject(process_, milliseconds) == WAIT_OBJECT_0;
}

DWORD StubProcess::ExitCode() const {
    DWORD code = STILL_ACTIVE;
    GetExitCodeProcess(process_, &code);
    return code;
}

bool SetControlText(HWND window, int id, const std::u16string& text) {
    DWORD_PTR result = 0;
    return SendMessageTimeoutW(GetDlgItem(window, id), WM_SETTEXT, 0,
                               reinterpret_cast<LPARAM>(Wide(text)), SMTO_ABORTIFHUNG,
                               kMessageTimeout, &result) != 0 &&
           result == TRUE;
}

std::u16string ControlText(HWND window, int id) {
    return TextOf(GetDlgItem(window, id));
}

std::u16string WindowCaption(HWND window) {
    return TextOf(window);
}

void PressButton(HWND window, int id) {
    PostMessageW(GetDlgItem(window, id), BM_CLICK, 0, 0);
}

}  // namespace tests
