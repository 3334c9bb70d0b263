// A self-extracting file written by the archive writer around the built stub, started as its
// own process without arguments and driven through its dialog from outside, as a user would.
// What the dialog does inside is tested in process; the tree and its tag streams from the stub's
// command line by the end-to-end script.

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/ArchiveWriteRequest.h"
#include "archive/detail/FileFormatSFX.h"
#include "frontend/resources/DialogControls.h"
#include "platform/Text.h"
#include "tests/TestFolder.h"
#include "tests/frontend/win32/BuiltStub.h"

namespace {

namespace fs = std::filesystem;
using tests::Bytes;

// Wine starts a process in seconds; the deadlines only keep a broken run from hanging.
constexpr DWORD kStartDeadline = 60000;
constexpr DWORD kRunDeadline = 120000;
// How long a message to the other process may take before it counts as hung.
constexpr UINT kMessageTimeout = 10000;

const wchar_t* Wide(const std::u16string& text) {
    return reinterpret_cast<const wchar_t*>(text.c_str());
}

// The text of a window of the other process, or of its control `id`.
std::string Text(HWND window, int id = 0) {
    wchar_t buffer[4096] = L"";
    DWORD_PTR length = 0;
    const HWND target = id == 0 ? window : GetDlgItem(window, id);
    if (target == nullptr ||
        SendMessageTimeoutW(target, WM_GETTEXT, 4096, reinterpret_cast<LPARAM>(buffer),
                            SMTO_ABORTIFHUNG, kMessageTimeout, &length) == 0) {
        return {};
    }
    return platform::Utf16ToUtf8(std::u16string(reinterpret_cast<const char16_t*>(buffer),
                                                std::min<DWORD_PTR>(length, 4095)));
}

bool SetText(HWND window, int id, const std::u16string& text) {
    DWORD_PTR result = 0;
    return SendMessageTimeoutW(GetDlgItem(window, id), WM_SETTEXT, 0,
                               reinterpret_cast<LPARAM>(Wide(text)), SMTO_ABORTIFHUNG,
                               kMessageTimeout, &result) != 0 &&
           result == TRUE;
}

struct DialogSearch {
    DWORD process;
    HWND except;
    HWND found = nullptr;
};

BOOL CALLBACK FindVisibleDialog(HWND window, LPARAM context) {
    auto& search = *reinterpret_cast<DialogSearch*>(context);
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    wchar_t name[16] = L"";
    GetClassNameW(window, name, 16);
    if (owner == search.process && window != search.except && IsWindowVisible(window) &&
        wcscmp(name, L"#32770") == 0) {
        search.found = window;
        return FALSE;
    }
    return TRUE;
}

// A program started without arguments in a folder; killed if it still runs at the end.
class StubProcess {
public:
    StubProcess(const std::u16string& path, const std::u16string& folder) {
        std::u16string commandLine = u"\"" + path + u"\"";
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION started{};
        if (CreateProcessW(Wide(path), reinterpret_cast<wchar_t*>(commandLine.data()), nullptr,
                           nullptr, FALSE, 0, nullptr, Wide(folder), &startup, &started)) {
            CloseHandle(started.hThread);
            process_ = started.hProcess;
            id_ = started.dwProcessId;
        }
    }
    ~StubProcess() {
        if (process_ != nullptr) {
            TerminateProcess(process_, 1);
            WaitForSingleObject(process_, 5000);
            CloseHandle(process_);
        }
    }
    StubProcess(const StubProcess&) = delete;
    StubProcess& operator=(const StubProcess&) = delete;

    bool Started() const { return process_ != nullptr; }
    // A visible dialog or message box of the process other than `except`; null when none came
    // before the deadline or the process ended.
    HWND WaitForWindow(HWND except, DWORD milliseconds) const {
        const ULONGLONG deadline = GetTickCount64() + milliseconds;
        while (Started() && !WaitForExit(0)) {
            DialogSearch search{id_, except};
            EnumWindows(FindVisibleDialog, reinterpret_cast<LPARAM>(&search));
            if (search.found != nullptr || GetTickCount64() > deadline) {
                return search.found;
            }
            Sleep(50);
        }
        return nullptr;
    }
    bool WaitForExit(DWORD milliseconds) const {
        return WaitForSingleObject(process_, milliseconds) == WAIT_OBJECT_0;
    }
    DWORD ExitCode() const {
        DWORD code = STILL_ACTIVE;
        GetExitCodeProcess(process_, &code);
        return code;
    }

private:
    HANDLE process_ = nullptr;
    DWORD id_ = 0;
};

TEST(SfxDialogEndToEndTest, PasswordTypedIntoTheStubsDialogExtractsTheArchive) {
    // "archive.exe" in a folder of its own, holding data\notes\blob.bin, sealed with a password.
    tests::TestFolder archiveFolder;
    const fs::path data = archiveFolder.Native() / "data";
    const Bytes blob(300000, 'b');
    tests::WriteBytes(data / "notes" / "blob.bin", blob);
    ArchiveWriteRequest request;
    request.rootPath = data.u16string();
    request.archiveFolder = archiveFolder.Root();
    request.archiveName = u"archive";
    request.password = u"correct horse";
    request.passwordGiven = true;
    for (const fs::path& path : {data, data / "notes", data / "notes" / "blob.bin"}) {
        ArchiveWriteItem item;
        item.path = path.u16string();
        item.isFolder = fs::is_directory(path);
        item.size = item.isFolder ? 0 : blob.size();
        request.items.push_back(item);
    }
    DCCArchiveUserSettings settings;
    DCCFileFormatSFX format(tests::BuiltStubPath());
    ASSERT_EQ(format.WriteArchive(&request, &settings), FORMAT_OK);

    StubProcess stub(request.archiveName, archiveFolder.Root());
    ASSERT_TRUE(stub.Started());
    const HWND dialog = stub.WaitForWindow(nullptr, kStartDeadline);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(Text(dialog), "Extract archive");
    EXPECT_EQ(Text(dialog, IDC_TARGET_FOLDER), platform::Utf16ToUtf8(archiveFolder.Root() + u"\\"));

    tests::TestFolder target;
    ASSERT_TRUE(SetText(dialog, IDC_TARGET_FOLDER, target.Root()));
    ASSERT_TRUE(SetText(dialog, IDC_PASSWORD, u"correct horse"));
    PostMessageW(GetDlgItem(dialog, IDC_EXTRACT), BM_CLICK, 0, 0);
    // After a successful run the dialog ends without a word, and the process with it.
    if (!stub.WaitForExit(kRunDeadline)) {
        constexpr int kMessageBoxText = 0xFFFF;  // the static control that holds a box's text
        FAIL() << "the stub still runs; a box says: "
               << Text(stub.WaitForWindow(dialog, 0), kMessageBoxText);
    }
    EXPECT_EQ(stub.ExitCode(), 0u);
    // Below the target: a folder named after the archive, then the packed folder.
    EXPECT_EQ(tests::ReadBytes(target.Native() / "archive" / "data" / "notes" / "blob.bin"), blob);
}

}  // namespace
