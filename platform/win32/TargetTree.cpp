#include "platform/TargetTree.h"

#include <windows.h>
#include <winternl.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "platform/TreeHandles.h"

namespace platform {

namespace tree {

// NT opens no folder from its child, so every folder of the branch stays open.
const std::size_t kHeldFolders = SIZE_MAX;

namespace {

constexpr std::size_t kLongestName = 32767;
constexpr ACCESS_MASK kFolderAccess = FILE_LIST_DIRECTORY | FILE_TRAVERSE;
// A folder we hold open can't be renamed or deleted by anyone meanwhile: nobody can swap a
// reparse point in for it.
constexpr ULONG kHeldFolderShare = FILE_SHARE_READ | FILE_SHARE_WRITE;

HANDLE Native(Handle handle) {
    return reinterpret_cast<HANDLE>(handle);
}

// Opens `name` in `folder` with NtCreateFile, whose relative open is the only way to name a
// file from a folder handle. A reparse point at the name is opened itself, never followed.
ErrorCode OpenRelative(Handle folder, const std::u16string& name, ACCESS_MASK access,
                       ULONG disposition, ULONG options, HANDLE& opened,
                       ULONG share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE) {
    if (name.size() > kLongestName) {
        return kErrorFilenameExcedRange;
    }
    UNICODE_STRING text;
    text.Buffer = const_cast<PWSTR>(reinterpret_cast<PCWSTR>(name.c_str()));
    text.Length = static_cast<USHORT>(name.size() * sizeof(wchar_t));
    text.MaximumLength = text.Length;
    OBJECT_ATTRIBUTES attributes;
    InitializeObjectAttributes(&attributes, &text, OBJ_CASE_INSENSITIVE, Native(folder), nullptr);
    IO_STATUS_BLOCK status{};
    const NTSTATUS result = ::NtCreateFile(
        &opened, access | SYNCHRONIZE | FILE_READ_ATTRIBUTES, &attributes, &status, nullptr,
        FILE_ATTRIBUTE_NORMAL, share, disposition,
        options | FILE_OPEN_REPARSE_POINT | FILE_SYNCHRONOUS_IO_NONALERT, nullptr, 0);
    return NT_SUCCESS(result) ? kErrorSuccess : ::RtlNtStatusToDosError(result);
}

ErrorCode Describe(HANDLE handle, EntryKind& kind, FileIdentity& identity) {
    BY_HANDLE_FILE_INFORMATION info{};
    if (!::GetFileInformationByHandle(handle, &info)) {
        return ::GetLastError();
    }
    kind = (info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ? EntryKind::Other
           : (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0   ? EntryKind::Folder
                                                                       : EntryKind::File;
    identity = {info.dwVolumeSerialNumber,
                (std::uint64_t{info.nFileIndexHigh} << 32) | info.nFileIndexLow};
    return kErrorSuccess;
}

// Keeps `opened` when it is a real folder; closes it otherwise.
ErrorCode TakeFolder(HANDLE opened, Handle& folder, FileIdentity& identity) {
    EntryKind kind = EntryKind::Missing;
    ErrorCode error = Describe(opened, kind, identity);
    if (error == kErrorSuccess && kind != EntryKind::Folder) {
        error = kind == EntryKind::Other ? kErrorStoppedOnSymlink : kErrorDirectory;
    }
    if (error != kErrorSuccess) {
        ::CloseHandle(opened);
        return error;
    }
    folder = reinterpret_cast<Handle>(opened);
    return kErrorSuccess;
}

// `name` in `folder` opened for deleting or renaming, when it is a file or a reparse point.
ErrorCode OpenForRemoval(Handle folder, const std::u16string& name, HANDLE& opened) {
    return OpenRelative(folder, name, DELETE, FILE_OPEN, FILE_NON_DIRECTORY_FILE, opened);
}

}  // namespace

ErrorCode OpenRoot(const std::u16string& path, Handle& folder, FileIdentity& identity) {
    HANDLE opened =
        ::CreateFileW(reinterpret_cast<const wchar_t*>(path.c_str()),
                      kFolderAccess | SYNCHRONIZE | FILE_READ_ATTRIBUTES, kHeldFolderShare, nullptr,
                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return ::GetLastError();
    }
    FileIdentity found;
    EntryKind kind = EntryKind::Missing;
    if (const ErrorCode error = Describe(opened, kind, found);
        error != kErrorSuccess || kind == EntryKind::File) {
        ::CloseHandle(opened);
        return error != kErrorSuccess ? error : kErrorDirectory;
    }
    folder = reinterpret_cast<Handle>(opened);
    identity = found;
    return kErrorSuccess;
}

ErrorCode OpenFolder(Handle parent, const std::u16string& name, bool create, Handle& folder,
                     FileIdentity& identity) {
    HANDLE opened = INVALID_HANDLE_VALUE;
    if (const ErrorCode error =
            OpenRelative(parent, name, kFolderAccess, create ? FILE_OPEN_IF : FILE_OPEN,
                         FILE_DIRECTORY_FILE, opened, kHeldFolderShare);
        error != kErrorSuccess) {
        return error;
    }
    return TakeFolder(opened, folder, identity);
}

ErrorCode OpenParent(Handle, Handle&, FileIdentity&) {
    return kErrorNotSupported;
}

void CloseFolder(Handle folder) {
    ::CloseHandle(Native(folder));
}

std::u16string PathThrough(Handle) {
    return {};  // held folders can't be renamed here: the path under the target stays true
}

ErrorCode MakeFolder(Handle parent, const std::u16string& name) {
    HANDLE opened = INVALID_HANDLE_VALUE;
    const ErrorCode error =
        OpenRelative(parent, name, kFolderAccess, FILE_CREATE, FILE_DIRECTORY_FILE, opened);
    if (error == kErrorSuccess) {
        ::CloseHandle(opened);
    }
    return error;
}

ErrorCode Look(Handle folder, const std::u16string& name, EntryKind& kind, FileIdentity& identity) {
    kind = EntryKind::Missing;
    HANDLE opened = INVALID_HANDLE_VALUE;
    const ErrorCode error = OpenRelative(folder, name, 0, FILE_OPEN, 0, opened);
    if (error == kErrorFileNotFound) {
        return kErrorSuccess;
    }
    if (error != kErrorSuccess) {
        return error;
    }
    const ErrorCode described = Describe(opened, kind, identity);
    ::CloseHandle(opened);
    return described;
}

ErrorCode CreateNewFile(Handle folder, const std::u16string& name, Handle& file) {
    HANDLE opened = INVALID_HANDLE_VALUE;
    const ErrorCode error =
        OpenRelative(folder, name, GENERIC_WRITE, FILE_CREATE, FILE_NON_DIRECTORY_FILE, opened);
    if (error == kErrorAlreadyExists) {
        return kErrorFileExists;
    }
    if (error == kErrorSuccess) {
        file = reinterpret_cast<Handle>(opened);
    }
    return error;
}

// The rename by the folder's present path, for a system whose native call refuses a name
// relative to a folder handle (32-bit Wine). The folder stays open, so it can't be removed, but
// a link put in place of one above it would be followed by this rename alone (none can be put
// in place of a folder of the open branch: they are held without sharing their deletion).
ErrorCode RenameByFolderPath(Handle folder, const std::u16string& from, const std::u16string& to) {
    std::vector<wchar_t> path(kLongestName + 1);
    const DWORD length = ::GetFinalPathNameByHandleW(Native(folder), path.data(),
                                                     static_cast<DWORD>(path.size()), 0);
    if (length == 0 || length >= path.size()) {
        return length == 0 ? ::GetLastError() : kErrorFilenameExcedRange;
    }
    const std::wstring base(path.data(), length);
    const std::wstring source = base + L"\\" + std::wstring(from.begin(), from.end());
    const std::wstring target = base + L"\\" + std::wstring(to.begin(), to.end());
    return ::MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING)
               ? kErrorSuccess
               : ::GetLastError();
}

ErrorCode Rename(Handle folder, const std::u16string& from, const std::u16string& to) {
    HANDLE opened = INVALID_HANDLE_VALUE;
    if (const ErrorCode error = OpenForRemoval(folder, from, opened); error != kErrorSuccess) {
        return error;
    }
    // The new name is given relative to the same folder handle, which only the native call
    // takes as it is.
    const std::size_t nameBytes = to.size() * sizeof(wchar_t);
    std::vector<std::uint8_t> buffer(sizeof(FILE_RENAME_INFORMATION) + nameBytes);
    auto* info = reinterpret_cast<FILE_RENAME_INFORMATION*>(buffer.data());
    info->ReplaceIfExists = TRUE;
    info->RootDirectory = Native(folder);
    info->FileNameLength = static_cast<ULONG>(nameBytes);
    std::memcpy(info->FileName, to.data(), nameBytes);
    IO_STATUS_BLOCK status{};
    const NTSTATUS result = ::NtSetInformationFile(
        opened, &status, info, static_cast<ULONG>(buffer.size()), FileRenameInformation);
    ::CloseHandle(opened);
    if (result == STATUS_INVALID_PARAMETER) {
        return RenameByFolderPath(folder, from, to);
    }
    return NT_SUCCESS(result) ? kErrorSuccess : ::RtlNtStatusToDosError(result);
}

ErrorCode RemoveFile(Handle folder, const std::u16string& name) {
    HANDLE opened = INVALID_HANDLE_VALUE;
    if (const ErrorCode error = OpenForRemoval(folder, name, opened); error != kErrorSuccess) {
        return error;
    }
    FILE_DISPOSITION_INFO disposition{};
    disposition.DeleteFile = TRUE;
    const BOOL removed =
        ::SetFileInformationByHandle(opened, FileDispositionInfo, &disposition, sizeof disposition);
    const ErrorCode error = removed ? kErrorSuccess : ::GetLastError();
    ::CloseHandle(opened);
    return error;
}

}  // namespace tree

ErrorCode IdentityOf(const File& file, FileIdentity& identity) {
    EntryKind kind = EntryKind::Missing;
    return tree::Describe(reinterpret_cast<HANDLE>(file.handle_), kind, identity);
}

}  // namespace platform
