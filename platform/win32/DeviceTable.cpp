#include "platform/DeviceTable.h"

#include <windows.h>
#include <winternl.h>

#include <cwctype>
#include <string>
#include <vector>

namespace platform {
namespace {

constexpr NTSTATUS kStatusBufferTooSmall = static_cast<NTSTATUS>(0xC0000023);
constexpr ACCESS_MASK kSymbolicLinkQuery = 1;
constexpr ACCESS_MASK kDirectoryQueryAndTraverse = 3;
// Case-insensitive names, kernel handle.
constexpr ULONG kObjectAttributes = 0x240;

// One entry of a directory object's listing.
struct DirectoryEntry {
    UNICODE_STRING Name;
    UNICODE_STRING TypeName;
};

using InitUnicodeStringCall = VOID(NTAPI*)(PUNICODE_STRING, PCWSTR);
using OpenSymbolicLinkCall = NTSTATUS(NTAPI*)(PHANDLE, ACCESS_MASK, POBJECT_ATTRIBUTES);
using QuerySymbolicLinkCall = NTSTATUS(NTAPI*)(HANDLE, PUNICODE_STRING, PULONG);
using CloseCall = NTSTATUS(NTAPI*)(HANDLE);
using OpenDirectoryCall = NTSTATUS(NTAPI*)(PHANDLE, ACCESS_MASK, POBJECT_ATTRIBUTES);
using QueryDirectoryCall = NTSTATUS(NTAPI*)(HANDLE, PVOID, ULONG, BOOLEAN, BOOLEAN, PULONG, PULONG);

template <typename Call>
Call Entry(HMODULE module, const char* name) {
    if (module == nullptr) {
        return nullptr;
    }
    // Through the generic function pointer type, which converts to any other without warning.
    return reinterpret_cast<Call>(reinterpret_cast<void (*)()>(::GetProcAddress(module, name)));
}

std::u16string Portable(const wchar_t* text, std::size_t length) {
    return std::u16string(reinterpret_cast<const char16_t*>(text), length);
}

// The object manager's namespace, through ntdll entry points resolved when it is opened.
class ObjectNamespace final : public DeviceNamespace {
public:
    bool Resolve() {
        const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
        initUnicodeString_ = Entry<InitUnicodeStringCall>(ntdll, "RtlInitUnicodeString");
        openSymbolicLink_ = Entry<OpenSymbolicLinkCall>(ntdll, "NtOpenSymbolicLinkObject");
        querySymbolicLink_ = Entry<QuerySymbolicLinkCall>(ntdll, "NtQuerySymbolicLinkObject");
        close_ = Entry<CloseCall>(ntdll, "NtClose");
        openDirectory_ = Entry<OpenDirectoryCall>(ntdll, "NtOpenDirectoryObject");
        queryDirectory_ = Entry<QueryDirectoryCall>(ntdll, "NtQueryDirectoryObject");
        return initUnicodeString_ && openSymbolicLink_ && querySymbolicLink_ && close_ &&
               openDirectory_ && queryDirectory_;
    }

    std::array<std::u16string, 26> DriveTargets() override {
        std::array<std::u16string, 26> drives;
        for (wchar_t letter = L'A'; letter <= L'Z'; ++letter) {
            const std::wstring name = std::wstring(L"\\DosDevices\\") + letter + L":";
            HANDLE link = nullptr;
            if (OpenLink(name.c_str(), nullptr, link)) {
                drives[static_cast<std::size_t>(letter - L'A')] = LinkTarget(link);
                close_(link);
            }
        }
        return drives;
    }

    bool ListVolumes(std::vector<VolumeLink>& volumes) override {
        HANDLE directory = nullptr;
        if (!OpenDirectory(L"\\GLOBAL??", directory) && !OpenDirectory(L"\\??", directory)) {
            return false;
        }
        ULONG context = 0;
        for (;;) {
            ULONG size = 0;
            ULONG probe = context;
            if (queryDirectory_(directory, nullptr, 0, TRUE, FALSE, &probe, &size) !=
                    kStatusBufferTooSmall ||
                size == 0) {
                break;
            }
            std::vector<unsigned char> buffer(size);
            if (!NT_SUCCESS(queryDirectory_(directory, buffer.data(), size, TRUE, FALSE, &context,
                                            &size))) {
                break;
            }
            const auto* entry = reinterpret_cast<const DirectoryEntry*>(buffer.data());
            AddVolume(directory, entry->Name, volumes);
        }
        close_(directory);
        return true;
    }

private:
    static OBJECT_ATTRIBUTES Attributes(PUNICODE_STRING name, HANDLE root) {
        OBJECT_ATTRIBUTES attributes{};
        attributes.Length = sizeof attributes;
        attributes.RootDirectory = root;
        attributes.ObjectName = name;
        attributes.Attributes = kObjectAttributes;
        return attributes;
    }

    // Where the system keeps no global directory of its own (Wine has none), the caller's view
    // of the links stands in for it.
    bool OpenDirectory(const wchar_t* path, HANDLE& directory) {
        UNICODE_STRING name;
        initUnicodeString_(&name, path);
        OBJECT_ATTRIBUTES attributes = Attributes(&name, nullptr);
        return NT_SUCCESS(openDirectory_(&directory, kDirectoryQueryAndTraverse, &attributes));
    }

    bool OpenLink(const wchar_t* path, HANDLE root, HANDLE& link) {
        UNICODE_STRING name;
        initUnicodeString_(&name, path);
        OBJECT_ATTRIBUTES attributes = Attributes(&name, root);
        return NT_SUCCESS(openSymbolicLink_(&link, kSymbolicLinkQuery, &attributes));
    }

    // Asks for the size first, then for the target; empty when either fails.
    std::u16string LinkTarget(HANDLE link) {
        UNICODE_STRING target{};
        ULONG size = 0;
        if (querySymbolicLink_(link, &target, &size) != kStatusBufferTooSmall || size == 0 ||
            size > 0xFFFC) {
            return {};
        }
        std::vector<wchar_t> buffer(size / sizeof(wchar_t) + 2, L'\0');
        target.Buffer = buffer.data();
        target.Length = 0;
        target.MaximumLength = static_cast<USHORT>(size);
        if (!NT_SUCCESS(querySymbolicLink_(link, &target, &size))) {
            return {};
        }
        return Portable(target.Buffer, target.Length / sizeof(wchar_t));
    }

    void AddVolume(HANDLE directory, const UNICODE_STRING& entryName,
                   std::vector<VolumeLink>& volumes) {
        const std::wstring name(entryName.Buffer, entryName.Length / sizeof(wchar_t));
        static constexpr wchar_t kVolumePrefix[] = L"Volume{";
        if (name.size() < 7 || _wcsnicmp(name.c_str(), kVolumePrefix, 7) != 0) {
            return;
        }
        HANDLE link = nullptr;
        if (!OpenLink(name.c_str(), directory, link)) {
            return;
        }
        VolumeLink volume;
        volume.Name = Portable(name.c_str(), name.size());
        volume.Target = LinkTarget(link);
        volume.Removable = MountedOnRemovableDrive(L"\\\\?\\" + name + L"\\");
        volumes.push_back(std::move(volume));
        close_(link);
    }

    static bool MountedOnRemovableDrive(const std::wstring& volume) {
        std::vector<wchar_t> paths(MAX_PATH + 1);
        DWORD needed = 0;
        if (!::GetVolumePathNamesForVolumeNameW(volume.c_str(), paths.data(),
                                                static_cast<DWORD>(paths.size()), &needed)) {
            if (::GetLastError() != ERROR_MORE_DATA || needed == 0) {
                return false;
            }
            paths.assign(needed + 1, L'\0');
            if (!::GetVolumePathNamesForVolumeNameW(volume.c_str(), paths.data(),
                                                    static_cast<DWORD>(paths.size()), &needed)) {
                return false;
            }
        }
        for (const wchar_t* path = paths.data(); *path != L'\0'; path += wcslen(path) + 1) {
            if (::GetDriveTypeW(path) == DRIVE_REMOVABLE) {
                return true;
            }
        }
        return false;
    }

    InitUnicodeStringCall initUnicodeString_ = nullptr;
    OpenSymbolicLinkCall openSymbolicLink_ = nullptr;
    QuerySymbolicLinkCall querySymbolicLink_ = nullptr;
    CloseCall close_ = nullptr;
    OpenDirectoryCall openDirectory_ = nullptr;
    QueryDirectoryCall queryDirectory_ = nullptr;
};

}  // namespace

std::unique_ptr<DeviceNamespace> DeviceNamespace::Open() {
    auto opened = std::make_unique<ObjectNamespace>();
    if (!opened->Resolve()) {
        return nullptr;
    }
    return opened;
}

}  // namespace platform
