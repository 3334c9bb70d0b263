#include "platform/File.h"

#include <windows.h>

#include <algorithm>
#include <vector>

namespace platform {
namespace {

const wchar_t* Wide(const std::u16string& path) {
    return reinterpret_cast<const wchar_t*>(path.c_str());
}

HANDLE Handle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

}  // namespace

ErrorCode File::Open(const std::u16string& path, OpenMode mode) {
    Close();
    DWORD access = GENERIC_READ;
    DWORD disposition = OPEN_EXISTING;
    DWORD share = FILE_SHARE_READ;
    switch (mode) {
        case OpenMode::Read:
            share = FILE_SHARE_READ | FILE_SHARE_WRITE;
            break;
        case OpenMode::ReadWrite:
            access = GENERIC_READ | GENERIC_WRITE;
            break;
        case OpenMode::CreateAlways:
            access = GENERIC_WRITE, disposition = CREATE_ALWAYS;
            break;
        case OpenMode::CreateNew:
            access = GENERIC_WRITE, disposition = CREATE_NEW;
            break;
        case OpenMode::Append:
            access = FILE_APPEND_DATA, disposition = OPEN_ALWAYS;
            break;
    }
    HANDLE h = ::CreateFileW(Wide(path), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                             nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        return ::GetLastError();
    }
    handle_ = reinterpret_cast<std::intptr_t>(h);
    return kErrorSuccess;
}

void File::Close() {
    if (handle_ != -1) {
        ::CloseHandle(Handle(handle_));
        handle_ = -1;
    }
}

bool File::IsOpen() const {
    return handle_ != -1;
}

ErrorCode File::Read(void* buffer, std::size_t size, std::size_t& got) {
    got = 0;
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    auto* out = static_cast<unsigned char*>(buffer);
    while (got < size) {
        const DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(size - got, 1u << 30));
        DWORD n = 0;
        if (!::ReadFile(Handle(handle_), out + got, chunk, &n, nullptr)) {
            const DWORD error = ::GetLastError();
            return error == ERROR_HANDLE_EOF ? kErrorSuccess : error;
        }
        if (n == 0) {
            break;
        }
        got += n;
    }
    return kErrorSuccess;
}

ErrorCode File::Write(const void* buffer, std::size_t size) {
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    const auto* in = static_cast<const unsigned char*>(buffer);
    std::size_t done = 0;
    while (done < size) {
        const DWORD chunk = static_cast<DWORD>(std::min<std::size_t>(size - done, 1u << 30));
        DWORD n = 0;
        if (!::WriteFile(Handle(handle_), in + done, chunk, &n, nullptr)) {
            return ::GetLastError();
        }
        done += n;
    }
    return kErrorSuccess;
}

ErrorCode File::Seek(std::uint64_t offset) {
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    LARGE_INTEGER distance;
    distance.QuadPart = static_cast<LONGLONG>(offset);
    if (distance.QuadPart < 0) {
        return kErrorNegativeSeek;
    }
    return ::SetFilePointerEx(Handle(handle_), distance, nullptr, FILE_BEGIN) ? kErrorSuccess
                                                                              : ::GetLastError();
}

ErrorCode File::Tell(std::uint64_t& offset) const {
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    LARGE_INTEGER zero{};
    LARGE_INTEGER at{};
    if (!::SetFilePointerEx(Handle(handle_), zero, &at, FILE_CURRENT)) {
        return ::GetLastError();
    }
    offset = static_cast<std::uint64_t>(at.QuadPart);
    return kErrorSuccess;
}

ErrorCode File::Size(std::uint64_t& size) const {
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    LARGE_INTEGER value{};
    if (!::GetFileSizeEx(Handle(handle_), &value)) {
        return ::GetLastError();
    }
    size = static_cast<std::uint64_t>(value.QuadPart);
    return kErrorSuccess;
}

ErrorCode File::Flush() {
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    return kErrorSuccess;  // WriteFile hands the bytes to the system at once
}

bool QueryFileSize(const std::u16string& path, std::uint64_t& size) {
    HANDLE h = ::CreateFileW(Wide(path), FILE_READ_ATTRIBUTES, FILE_SHARE_READ, nullptr,
                             OPEN_EXISTING, 0, nullptr);
    if (h == INVALID_HANDLE_VALUE) {
        return false;
    }
    LARGE_INTEGER value{};
    const bool ok = ::GetFileSizeEx(h, &value) != 0;
    ::CloseHandle(h);
    if (ok) {
        size = static_cast<std::uint64_t>(value.QuadPart);
    }
    return ok;
}

bool PathExists(const std::u16string& path) {
    return ::GetFileAttributesW(Wide(path)) != INVALID_FILE_ATTRIBUTES;
}

bool IsDirectory(const std::u16string& path) {
    const DWORD attributes = ::GetFileAttributesW(Wide(path));
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

ErrorCode RemoveFile(const std::u16string& path) {
    return ::DeleteFileW(Wide(path)) ? kErrorSuccess : ::GetLastError();
}

ErrorCode MoveFileNoReplace(const std::u16string& from, const std::u16string& to) {
    return ::MoveFileW(Wide(from), Wide(to)) ? kErrorSuccess : ::GetLastError();
}

ErrorCode MoveFileReplacing(const std::u16string& from, const std::u16string& to) {
    return ::MoveFileExW(Wide(from), Wide(to), MOVEFILE_REPLACE_EXISTING) ? kErrorSuccess
                                                                          : ::GetLastError();
}

ErrorCode CopyFileReplacing(const std::u16string& from, const std::u16string& to) {
    return ::CopyFileW(Wide(from), Wide(to), FALSE) ? kErrorSuccess : ::GetLastError();
}

ErrorCode MakeDirectory(const std::u16string& path) {
    return ::CreateDirectoryW(Wide(path), nullptr) ? kErrorSuccess : ::GetLastError();
}

ErrorCode RemoveEmptyDirectory(const std::u16string& path) {
    return ::RemoveDirectoryW(Wide(path)) ? kErrorSuccess : ::GetLastError();
}

ErrorCode CreateTempFile(const std::u16string& folder, const std::u16string& prefix,
                         std::u16string& path) {
    std::vector<wchar_t> buffer(MAX_PATH + 1);
    if (::GetTempFileNameW(Wide(folder), Wide(prefix), 0, buffer.data()) == 0) {
        return ::GetLastError();
    }
    path.assign(reinterpret_cast<const char16_t*>(buffer.data()));
    return kErrorSuccess;
}

}  // namespace platform
