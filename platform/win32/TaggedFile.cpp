#include "platform/TaggedFile.h"

#include <windows.h>
#include <winternl.h>

namespace platform {
namespace {

// Access, disposition and options with which the target and its stream are opened.
constexpr ACCESS_MASK kTagAccess = GENERIC_WRITE | FILE_READ_ATTRIBUTES;
constexpr ULONG kFileOpen = 1;
constexpr ULONG kFileCreate = 2;
constexpr ULONG kFileOpenIf = 3;
constexpr ULONG kFileOverwriteIf = 5;
constexpr ULONG kCompleteIfOplocked = 0x100;
constexpr ULONG kNonDirectoryFile = 0x40;
constexpr ULONG kSynchronousIoNonAlert = 0x20;
constexpr ULONG kAsynchronousRequest = 0x40000000;
constexpr ULONG_PTR kFileOpened = 1;
constexpr ULONG_PTR kFileOverwritten = 3;
constexpr NTSTATUS kStatusObjectNameCollision = static_cast<NTSTATUS>(0xC0000035);

using NtCreateFileCall = NTSTATUS(NTAPI*)(PHANDLE, ACCESS_MASK, POBJECT_ATTRIBUTES,
                                          PIO_STATUS_BLOCK, PLARGE_INTEGER, ULONG, ULONG, ULONG,
                                          ULONG, PVOID, ULONG);
using DosPathToNtPathCall = BOOLEAN(NTAPI*)(PCWSTR, PUNICODE_STRING, PCWSTR*, PVOID);
using FreeUnicodeStringCall = VOID(NTAPI*)(PUNICODE_STRING);
using StatusToDosErrorCall = ULONG(NTAPI*)(NTSTATUS);

// The ntdll entry points, looked up once and kept for the life of the process.
struct NtApi {
    NtCreateFileCall createFile = nullptr;
    DosPathToNtPathCall dosPathToNtPath = nullptr;
    FreeUnicodeStringCall freeUnicodeString = nullptr;
    StatusToDosErrorCall statusToDosError = nullptr;

    bool Complete() const {
        return createFile && dosPathToNtPath && freeUnicodeString && statusToDosError;
    }
};

template <typename Call>
Call Entry(HMODULE module, const char* name) {
    if (module == nullptr) {
        return nullptr;
    }
    // Through the generic function pointer type, which converts to any other without warning.
    return reinterpret_cast<Call>(reinterpret_cast<void (*)()>(::GetProcAddress(module, name)));
}

const NtApi& Ntdll() {
    static const NtApi api = [] {
        const HMODULE module = ::GetModuleHandleW(L"ntdll.dll");
        NtApi found;
        found.createFile = Entry<NtCreateFileCall>(module, "NtCreateFile");
        found.dosPathToNtPath = Entry<DosPathToNtPathCall>(module, "RtlDosPathNameToNtPathName_U");
        found.freeUnicodeString = Entry<FreeUnicodeStringCall>(module, "RtlFreeUnicodeString");
        found.statusToDosError = Entry<StatusToDosErrorCall>(module, "RtlNtStatusToDosError");
        return found;
    }();
    return api;
}

// Opens a file or a named stream through NtCreateFile rather than CreateFileW. Gives the
// invalid handle with the thread's last error set on failure; on success the last error is 0,
// or 183 when an existing file was opened under FILE_OPEN_IF or overwritten under
// FILE_OVERWRITE_IF.
HANDLE NativeCreateFile(const wchar_t* path, ACCESS_MASK access, ULONG disposition, ULONG options) {
    if (path == nullptr || *path == L'\0') {
        ::SetLastError(ERROR_PATH_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    const NtApi& nt = Ntdll();
    if (!nt.Complete()) {
        ::SetLastError(ERROR_INTERNAL_ERROR);
        return INVALID_HANDLE_VALUE;
    }
    UNICODE_STRING name{};
    if (!nt.dosPathToNtPath(path, &name, nullptr, nullptr)) {
        ::SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    OBJECT_ATTRIBUTES attributes;
    InitializeObjectAttributes(&attributes, &name, 0, nullptr, nullptr);
    options |= kNonDirectoryFile;
    if ((options & kAsynchronousRequest) == 0) {
        options |= kSynchronousIoNonAlert;
    }
    IO_STATUS_BLOCK status{};
    HANDLE handle = INVALID_HANDLE_VALUE;
    const NTSTATUS result =
        nt.createFile(&handle, access | SYNCHRONIZE | FILE_READ_ATTRIBUTES, &attributes, &status,
                      nullptr, FILE_ATTRIBUTE_NORMAL, FILE_SHARE_READ | FILE_SHARE_WRITE,
                      disposition, options, nullptr, 0);
    nt.freeUnicodeString(&name);
    if (!NT_SUCCESS(result)) {
        ::SetLastError(result == kStatusObjectNameCollision && disposition == kFileCreate
                           ? ERROR_FILE_EXISTS
                           : nt.statusToDosError(result));
        return INVALID_HANDLE_VALUE;
    }
    const bool existed =
        (disposition == kFileOpenIf && status.Information == kFileOpened) ||
        (disposition == kFileOverwriteIf && status.Information == kFileOverwritten);
    ::SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

const wchar_t* Wide(const std::u16string& path) {
    return reinterpret_cast<const wchar_t*>(path.c_str());
}

HANDLE Handle(TagHandle handle) {
    return reinterpret_cast<HANDLE>(handle);
}

ErrorCode Result(BOOL succeeded) {
    return succeeded ? kErrorSuccess : ::GetLastError();
}

ErrorCode Open(const std::u16string& path, ACCESS_MASK access, ULONG disposition, ULONG options,
               TagHandle& handle) {
    const HANDLE opened = NativeCreateFile(Wide(path), access, disposition, options);
    handle = reinterpret_cast<TagHandle>(opened);
    return opened == INVALID_HANDLE_VALUE ? ::GetLastError() : kErrorSuccess;
}

std::uint64_t ToStamp(const FILETIME& time) {
    return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

LARGE_INTEGER FromStamp(std::uint64_t stamp) {
    LARGE_INTEGER time;
    time.QuadPart = static_cast<LONGLONG>(stamp);
    return time;
}

}  // namespace

ErrorCode OpenTaggedFile(const std::u16string& path, TagHandle& handle) {
    return Open(path, kTagAccess, kFileOpen, kCompleteIfOplocked, handle);
}

void CloseTaggedFile(TagHandle file) {
    ::CloseHandle(Handle(file));
}

ErrorCode ReadFileStamps(TagHandle file, FileStamps& stamps) {
    BY_HANDLE_FILE_INFORMATION information{};
    if (!::GetFileInformationByHandle(Handle(file), &information)) {
        return ::GetLastError();
    }
    stamps.Creation = ToStamp(information.ftCreationTime);
    stamps.LastAccess = ToStamp(information.ftLastAccessTime);
    stamps.LastWrite = ToStamp(information.ftLastWriteTime);
    return kErrorSuccess;
}

ErrorCode RestoreFileStamps(TagHandle file, const FileStamps& stamps, std::uint32_t attributes) {
    FILE_BASIC_INFO information{};
    information.CreationTime = FromStamp(stamps.Creation);
    information.LastAccessTime = FromStamp(stamps.LastAccess);
    information.LastWriteTime = FromStamp(stamps.LastWrite);
    information.ChangeTime = FromStamp(stamps.LastWrite);
    information.FileAttributes = attributes;
    return Result(::SetFileInformationByHandle(Handle(file), FileBasicInfo, &information,
                                               sizeof information));
}

ErrorCode GetPathAttributes(const std::u16string& path, std::uint32_t& attributes) {
    attributes = ::GetFileAttributesW(Wide(path));
    return attributes == INVALID_FILE_ATTRIBUTES ? ::GetLastError() : kErrorSuccess;
}

ErrorCode SetPathAttributes(const std::u16string& path, std::uint32_t attributes) {
    return Result(::SetFileAttributesW(Wide(path), attributes));
}

ErrorCode OpenTagStream(const std::u16string& streamPath, TagHandle& handle) {
    return Open(streamPath, kTagAccess, kFileOverwriteIf, kCompleteIfOplocked, handle);
}

ErrorCode TagStreamSize(TagHandle stream, std::uint32_t& size) {
    size = ::GetFileSize(Handle(stream), nullptr);
    return size == INVALID_FILE_SIZE ? ::GetLastError() : kErrorSuccess;
}

ErrorCode SeekTagStreamEnd(TagHandle stream, std::uint32_t& position) {
    position = ::SetFilePointer(Handle(stream), 0, nullptr, FILE_END);
    return position == INVALID_SET_FILE_POINTER ? ::GetLastError() : kErrorSuccess;
}

ErrorCode WriteTagRecord(TagHandle stream, std::span<const std::uint8_t, 16> record) {
    DWORD written = 0;  // not looked at: only the result of the call counts
    return Result(::WriteFile(Handle(stream), record.data(), static_cast<DWORD>(record.size()),
                              &written, nullptr));
}

void CloseTagStream(TagHandle stream) {
    ::CloseHandle(Handle(stream));
}

ErrorCode DeleteTagStream(const std::u16string& streamPath) {
    return Result(::DeleteFileW(Wide(streamPath)));
}

ErrorCode ReadTagStream(const std::u16string& streamPath, std::vector<std::uint8_t>& content) {
    content.clear();
    TagHandle handle = kInvalidTagHandle;
    const ErrorCode opened = Open(streamPath, GENERIC_READ, kFileOpen, 0, handle);
    if (opened != kErrorSuccess) {
        return opened;
    }
    ErrorCode result = kErrorSuccess;
    std::uint8_t buffer[4096];
    for (;;) {
        DWORD got = 0;
        if (!::ReadFile(Handle(handle), buffer, sizeof buffer, &got, nullptr)) {
            result = ::GetLastError();
            break;
        }
        if (got == 0) {
            break;
        }
        content.insert(content.end(), buffer, buffer + got);
    }
    ::CloseHandle(Handle(handle));
    return result;
}

ErrorCode ReadPathStamps(const std::u16string& path, FileStamps& stamps) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!::GetFileAttributesExW(Wide(path), GetFileExInfoStandard, &data)) {
        return ::GetLastError();
    }
    stamps.Creation = ToStamp(data.ftCreationTime);
    stamps.LastAccess = ToStamp(data.ftLastAccessTime);
    stamps.LastWrite = ToStamp(data.ftLastWriteTime);
    return kErrorSuccess;
}

}  // namespace platform
