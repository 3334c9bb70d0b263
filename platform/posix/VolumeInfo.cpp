#include "platform/VolumeInfo.h"

#include <sys/statvfs.h>

#include <algorithm>
#include <vector>

#include "platform/Text.h"
#include "platform/posix/Errno.h"
#include "platform/posix/MountTable.h"

namespace platform {
namespace {

// The mount a path lies on, and the path resolved; the mount is null when either is unknown.
struct Location {
    std::vector<posix::MountEntry> Mounts;
    std::string Resolved;
    const posix::MountEntry* Mount = nullptr;
};

Location Locate(std::u16string_view path) {
    Location location;
    if (posix::ResolvePath(Utf16ToUtf8(path), location.Resolved) &&
        posix::ReadMountTable(location.Mounts)) {
        location.Mount = posix::MountOf(location.Mounts, location.Resolved);
    }
    return location;
}

// Sources of the kernel's SMB clients are "//server/share[/folder]".
bool IsNetworkShare(const posix::MountEntry& mount) {
    return (mount.FileSystem == "cifs" || mount.FileSystem == "smb3" ||
            mount.FileSystem == "smbfs") &&
           mount.Source.rfind("//", 0) == 0;
}

std::string Backslashed(std::string text) {
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

}  // namespace

NamedAnswer VolumeRootOf(std::u16string_view path) {
    const Location location = Locate(path);
    if (location.Mount == nullptr) {
        return {kErrorPathNotFound, {}};
    }
    std::string root = location.Mount->MountPoint;
    if (root.back() != '/') {
        root.push_back('/');
    }
    return {kErrorSuccess, Utf8ToUtf16(root)};
}

VolumeFileSystem VolumeFileSystemOf(std::u16string_view root) {
    struct statvfs info {};
    if (::statvfs(Utf16ToUtf8(root).c_str(), &info) != 0) {
        return {posix::LastError(), {}, 0};
    }
    const Location location = Locate(root);
    if (location.Mount == nullptr) {
        return {kErrorPathNotFound, {}, 0};
    }
    std::uint32_t flags = kCaseSensitiveSearch | kCasePreservedNames | kUnicodeOnDisk;
    if ((info.f_flag & ST_RDONLY) != 0) {
        flags |= kReadOnlyVolume;
    }
    return {kErrorSuccess, Utf8ToUtf16(location.Mount->FileSystem), flags};
}

NamedAnswer UniversalNameOf(std::u16string_view path) {
    if (path.empty()) {
        return {kErrorBadDevice, {}};
    }
    const Location location = Locate(path);
    if (location.Mount == nullptr || !IsNetworkShare(*location.Mount)) {
        return {kErrorNotConnected, {}};
    }
    std::string share = location.Mount->Source;
    while (share.size() > 2 && share.back() == '/') {
        share.pop_back();
    }
    const std::string& mountPoint = location.Mount->MountPoint;
    const std::string rest =
        mountPoint == "/" ? location.Resolved : location.Resolved.substr(mountPoint.size());
    return {kErrorSuccess, Utf8ToUtf16(Backslashed(share + rest))};
}

}  // namespace platform
