#include "platform/VolumeInfo.h"

#include <windows.h>
#include <winnetwk.h>

#include <string_view>
#include <vector>

namespace platform {
namespace {

// Buffers of the volume calls grow by doubling, up to a limit no path reaches.
constexpr DWORD kLargestBuffer = 1 << 20;

std::wstring Wide(std::u16string_view text) {
    return std::wstring(text.begin(), text.end());
}

std::u16string Portable(const wchar_t* text) {
    return std::u16string(reinterpret_cast<const char16_t*>(text));
}

// The drive under a drive letter, through the device the letter stands for: "\??\C:\..."
// for a substituted drive.
NamedAnswer RootOfDosDevice(std::u16string_view path) {
    const std::wstring drive = Wide(path.substr(0, 2));
    std::vector<wchar_t> target(1024);
    while (::QueryDosDeviceW(drive.c_str(), target.data(), static_cast<DWORD>(target.size())) ==
           0) {
        if (::GetLastError() != ERROR_INSUFFICIENT_BUFFER || target.size() >= kLargestBuffer) {
            return {kErrorPathNotFound, {}};
        }
        target.resize(target.size() * 2);
    }
    const std::wstring_view device(target.data());
    if (device.size() < 7 || device.substr(0, 4) != L"\\??\\") {
        return {kErrorPathNotFound, {}};
    }
    return {kErrorSuccess, std::u16string(device.begin() + 4, device.begin() + 7)};
}

}  // namespace

NamedAnswer VolumeRootOf(std::u16string_view path) {
    const std::wstring wide = Wide(path);
    std::vector<wchar_t> root(1024);
    for (;;) {
        if (::GetVolumePathNameW(wide.c_str(), root.data(), static_cast<DWORD>(root.size()))) {
            return {kErrorSuccess, Portable(root.data())};
        }
        const DWORD error = ::GetLastError();
        if ((error != ERROR_FILENAME_EXCED_RANGE && error != ERROR_MORE_DATA) ||
            root.size() >= kLargestBuffer) {
            break;
        }
        root.resize(root.size() * 2);
    }
    return RootOfDosDevice(path);
}

VolumeFileSystem VolumeFileSystemOf(std::u16string_view root) {
    const std::wstring wide = Wide(root);
    wchar_t name[MAX_PATH + 1] = {};
    DWORD flags = 0;
    const UINT oldMode = ::SetErrorMode(SEM_FAILCRITICALERRORS);
    const BOOL done = ::GetVolumeInformationW(wide.c_str(), nullptr, 0, nullptr, nullptr, &flags,
                                              name, MAX_PATH + 1);
    const DWORD error = ::GetLastError();
    ::SetErrorMode(oldMode);
    if (!done) {
        return {error, {}, 0};
    }
    return {kErrorSuccess, Portable(name), flags};
}

NamedAnswer UniversalNameOf(std::u16string_view path) {
    const std::wstring wide = Wide(path);
    std::vector<unsigned char> buffer(260);
    DWORD size = static_cast<DWORD>(buffer.size());
    DWORD result =
        ::WNetGetUniversalNameW(wide.c_str(), UNIVERSAL_NAME_INFO_LEVEL, buffer.data(), &size);
    if (result == ERROR_MORE_DATA) {
        buffer.resize(size);
        result =
            ::WNetGetUniversalNameW(wide.c_str(), UNIVERSAL_NAME_INFO_LEVEL, buffer.data(), &size);
    }
    if (result != NO_ERROR) {
        return {result, {}};
    }
    if (size == 0) {
        return {static_cast<ErrorCode>(-1), {}};
    }
    const auto* info = reinterpret_cast<const UNIVERSAL_NAME_INFOW*>(buffer.data());
    if (info->lpUniversalName == nullptr) {
        return {static_cast<ErrorCode>(-1), {}};
    }
    return {kErrorSuccess, Portable(info->lpUniversalName)};
}

}  // namespace platform
