#pragma once
// The stub's extraction dialog: one modal dialog box that takes a target folder and a password
// or a private key file, runs the extraction on a worker thread and shows its progress.

#include <windows.h>

#include <commdlg.h>
#include <shlobj.h>

#include <atomic>

// Private messages, both without arguments; both end the dialog. The worker sends the second
// when the archive code has run.
inline constexpr UINT kEndDialogRequest = WM_USER + 3;
inline constexpr UINT kExtractionEnded = WM_USER + 4;

// The dialog, from its initialisation on.
extern std::atomic<HWND> CurrentDialog;

// Every message box of the dialog and its worker goes through this pointer, so that a test can
// answer them. MessageBoxW unless replaced.
using MessageBoxFunction = int(WINAPI*)(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type);
extern std::atomic<MessageBoxFunction> DialogMessageBox;

// The two system pickers, replaceable in the same way so that a test can choose for the user:
// SHBrowseForFolderW and GetOpenFileNameW unless replaced. The dialog frees the item list that
// the folder picker gives through the shell's allocator, so a replacement allocates it there.
using BrowseForFolderFunction = PIDLIST_ABSOLUTE(WINAPI*)(LPBROWSEINFOW request);
extern std::atomic<BrowseForFolderFunction> DialogBrowseForFolder;
using OpenFileNameFunction = BOOL(WINAPI*)(LPOPENFILENAMEW request);
extern std::atomic<OpenFileNameFunction> DialogOpenFileName;

// Registers the control classes that the templates use; before a dialog is created.
bool RegisterDialogControls();

// Shows the dialog of `templateId` from the resources of `instance` and returns when it has
// ended; false when it could not be shown.
bool RunExtractionDialog(HINSTANCE instance, WORD templateId);

INT_PTR CALLBACK ExtractionDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

// The input controls enabled or not, the progress bar shown or not; Cancel stays enabled.
// Nothing happens before the dialog exists.
void SetControlsBusy(bool enabled, bool showProgress);
