#include "platform/TargetTree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/Text.h"
#include "platform/TreeHandles.h"
#include "platform/posix/Errno.h"

namespace platform {

namespace tree {

// A folder is reopened from its child through "..", so a small window of open folders serves
// a branch of any depth within the process's descriptor limit.
const std::size_t kHeldFolders = 64;

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

int Fd(Handle handle) {
    return static_cast<int>(handle);
}

template <typename Call>
int Retry(Call call) {
    int result = 0;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

FileIdentity IdentityFrom(const struct stat& info) {
    return {static_cast<std::uint64_t>(info.st_dev), static_cast<std::uint64_t>(info.st_ino)};
}

// The folder opened as `fd`, with its identity; closes it on failure.
ErrorCode TakeFolder(int fd, Handle& folder, FileIdentity& identity) {
    if (fd < 0) {
        // Something else than a folder stands there, as Windows says for a file in the way.
        return errno == ENOTDIR ? kErrorDirectory : posix::LastError();
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0) {
        const ErrorCode error = posix::LastError();
        ::close(fd);
        return error;
    }
    folder = fd;
    identity = IdentityFrom(info);
    return kErrorSuccess;
}

}  // namespace

ErrorCode OpenRoot(const std::u16string& path, Handle& folder, FileIdentity& identity) {
    const std::string native = Utf16ToUtf8(path);
    return TakeFolder(
        Retry([&] { return ::open(native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }), folder,
        identity);
}

ErrorCode OpenFolder(Handle parent, const std::u16string& name, bool create, Handle& folder,
                     FileIdentity& identity) {
    const std::string native = Utf16ToUtf8(name);
    if (create && ::mkdirat(Fd(parent), native.c_str(), 0777) != 0 && errno != EEXIST) {
        return posix::LastError();
    }
    const ErrorCode error =
        TakeFolder(Retry([&] { return ::openat(Fd(parent), native.c_str(), kFolderFlags); }),
                   folder, identity);
    struct stat info {};
    if (error == kErrorDirectory &&
        ::fstatat(Fd(parent), native.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISLNK(info.st_mode)) {
        return kErrorStoppedOnSymlink;  // the kernel says ENOTDIR for a link under O_DIRECTORY
    }
    return error;
}

ErrorCode OpenParent(Handle folder, Handle& parent, FileIdentity& identity) {
    return TakeFolder(Retry([&] { return ::openat(Fd(folder), "..", kFolderFlags); }), parent,
                      identity);
}

void CloseFolder(Handle folder) {
    ::close(Fd(folder));
}

ErrorCode MakeFolder(Handle parent, const std::u16string& name) {
    if (::mkdirat(Fd(parent), Utf16ToUtf8(name).c_str(), 0777) != 0) {
        return posix::LastError();
    }
    return kErrorSuccess;
}

ErrorCode Look(Handle folder, const std::u16string& name, EntryKind& kind, FileIdentity& identity) {
    struct stat info {};
    if (::fstatat(Fd(folder), Utf16ToUtf8(name).c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
        kind = EntryKind::Missing;
        return errno == ENOENT ? kErrorSuccess : posix::LastError();
    }
    kind = S_ISREG(info.st_mode)   ? EntryKind::File
           : S_ISDIR(info.st_mode) ? EntryKind::Folder
                                   : EntryKind::Other;
    identity = IdentityFrom(info);
    return kErrorSuccess;
}

ErrorCode CreateNewFile(Handle folder, const std::u16string& name, Handle& file) {
    const std::string native = Utf16ToUtf8(name);
    // O_EXCL never follows a link at the name, and never opens what is there.
    const int fd = Retry([&] {
        return ::openat(Fd(folder), native.c_str(),
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    });
    if (fd < 0) {
        return errno == EEXIST ? kErrorFileExists : posix::LastError();
    }
    file = fd;
    return kErrorSuccess;
}

ErrorCode Rename(Handle folder, const std::u16string& from, const std::u16string& to) {
    if (::renameat(Fd(folder), Utf16ToUtf8(from).c_str(), Fd(folder), Utf16ToUtf8(to).c_str()) !=
        0) {
        return posix::LastError();
    }
    return kErrorSuccess;
}

ErrorCode RemoveFile(Handle folder, const std::u16string& name) {
    // Without AT_REMOVEDIR a folder stays; a link loses its own name, never its target.
    if (::unlinkat(Fd(folder), Utf16ToUtf8(name).c_str(), 0) != 0) {
        return posix::LastError();
    }
    return kErrorSuccess;
}

}  // namespace tree

ErrorCode IdentityOf(const File& file, FileIdentity& identity) {
    struct stat info {};
    if (::fstat(static_cast<int>(file.handle_), &info) != 0) {
        return posix::LastError();
    }
    identity = tree::IdentityFrom(info);
    return kErrorSuccess;
}

}  // namespace platform
