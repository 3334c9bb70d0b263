#include "platform/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

#include "platform/Text.h"
#include "platform/posix/Errno.h"

namespace platform {
namespace {

std::string Native(const std::u16string& path) {
    return Utf16ToUtf8(path);
}

// Windows tells a missing file (2) from a missing folder on the way to it (3).
ErrorCode MissingPathError(const std::string& native) {
    const std::size_t slash = native.find_last_of('/');
    if (slash == std::string::npos || slash == 0) {
        return kErrorFileNotFound;
    }
    struct stat info {};
    const std::string parent = native.substr(0, slash);
    return ::stat(parent.c_str(), &info) == 0 && S_ISDIR(info.st_mode) ? kErrorFileNotFound
                                                                       : kErrorPathNotFound;
}

// errno after a failed call on `native`, mapped.
ErrorCode PathError(const std::string& native) {
    const int error = errno;
    return error == ENOENT ? MissingPathError(native) : posix::FromErrno(error);
}

int Fd(std::intptr_t handle) {
    return static_cast<int>(handle);
}

// Retries a call interrupted by a signal.
template <typename Call>
auto Retry(Call call) {
    decltype(call()) result;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

}  // namespace

ErrorCode File::Open(const std::u16string& path, OpenMode mode) {
    Close();
    int flags = O_CLOEXEC;
    switch (mode) {
        case OpenMode::Read:
            flags |= O_RDONLY;
            break;
        case OpenMode::ReadWrite:
            flags |= O_RDWR;
            break;
        case OpenMode::CreateAlways:
            flags |= O_WRONLY | O_CREAT | O_TRUNC;
            break;
        case OpenMode::CreateNew:
            flags |= O_WRONLY | O_CREAT | O_EXCL;
            break;
        case OpenMode::Append:
            flags |= O_WRONLY | O_CREAT | O_APPEND;
            break;
    }
    const std::string native = Native(path);
    const int fd = Retry([&] { return ::open(native.c_str(), flags, 0666); });
    if (fd < 0) {
        return errno == EEXIST ? kErrorFileExists : PathError(native);
    }
    struct stat info {};
    if (::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
        ::close(fd);
        return kErrorAccessDenied;  // as Windows answers for a folder opened as a file
    }
    handle_ = fd;
    return kErrorSuccess;
}

void File::Close() {
    if (handle_ >= 0) {
        ::close(Fd(handle_));
        handle_ = -1;
    }
}

bool File::IsOpen() const {
    return handle_ >= 0;
}

ErrorCode File::Read(void* buffer, std::size_t size, std::size_t& got) {
    got = 0;
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    auto* out = static_cast<unsigned char*>(buffer);
    while (got < size) {
        const ssize_t n = Retry([&] { return ::read(Fd(handle_), out + got, size - got); });
        if (n < 0) {
            return posix::LastError();
        }
        if (n == 0) {
            break;
        }
        got += static_cast<std::size_t>(n);
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
        const ssize_t n = Retry([&] { return ::write(Fd(handle_), in + done, size - done); });
        if (n < 0) {
            return posix::LastError();
        }
        done += static_cast<std::size_t>(n);
    }
    return kErrorSuccess;
}

ErrorCode File::Seek(std::uint64_t offset) {
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    if (offset > static_cast<std::uint64_t>(INT64_MAX)) {
        return kErrorNegativeSeek;
    }
    if (::lseek(Fd(handle_), static_cast<off_t>(offset), SEEK_SET) < 0) {
        return posix::LastError();
    }
    return kErrorSuccess;
}

ErrorCode File::Tell(std::uint64_t& offset) const {
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    const off_t at = ::lseek(Fd(handle_), 0, SEEK_CUR);
    if (at < 0) {
        return posix::LastError();
    }
    offset = static_cast<std::uint64_t>(at);
    return kErrorSuccess;
}

ErrorCode File::Size(std::uint64_t& size) const {
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    struct stat info {};
    if (::fstat(Fd(handle_), &info) != 0) {
        return posix::LastError();
    }
    size = static_cast<std::uint64_t>(info.st_size);
    return kErrorSuccess;
}

ErrorCode File::Flush() {
    if (!IsOpen()) {
        return kErrorInvalidHandle;
    }
    return kErrorSuccess;  // writes are unbuffered at this level
}

bool QueryFileSize(const std::u16string& path, std::uint64_t& size) {
    struct stat info {};
    if (::stat(Native(path).c_str(), &info) != 0 || S_ISDIR(info.st_mode)) {
        return false;
    }
    size = static_cast<std::uint64_t>(info.st_size);
    return true;
}

bool PathExists(const std::u16string& path) {
    struct stat info {};
    return ::stat(Native(path).c_str(), &info) == 0;
}

bool IsDirectory(const std::u16string& path) {
    struct stat info {};
    return ::stat(Native(path).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

ErrorCode RemoveFile(const std::u16string& path) {
    const std::string native = Native(path);
    struct stat info {};
    if (::lstat(native.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
        return kErrorAccessDenied;
    }
    return ::unlink(native.c_str()) == 0 ? kErrorSuccess : PathError(native);
}

ErrorCode MoveFileNoReplace(const std::u16string& from, const std::u16string& to) {
    // Windows MoveFile never replaces; link + unlink gives the same guarantee atomically
    // where hard links work, and a checked rename elsewhere.
    const std::string source = Native(from);
    const std::string target = Native(to);
    if (::link(source.c_str(), target.c_str()) == 0) {
        ::unlink(source.c_str());
        return kErrorSuccess;
    }
    if (errno == EEXIST) {
        return kErrorAlreadyExists;
    }
    if (PathExists(to)) {
        return kErrorAlreadyExists;
    }
    return ::rename(source.c_str(), target.c_str()) == 0 ? kErrorSuccess : posix::LastError();
}

ErrorCode MoveFileReplacing(const std::u16string& from, const std::u16string& to) {
    return ::rename(Native(from).c_str(), Native(to).c_str()) == 0 ? kErrorSuccess
                                                                   : posix::LastError();
}

ErrorCode CopyFileReplacing(const std::u16string& from, const std::u16string& to) {
    File source;
    if (const ErrorCode error = source.Open(from, OpenMode::Read); error != kErrorSuccess) {
        return error;
    }
    File target;
    if (const ErrorCode error = target.Open(to, OpenMode::CreateAlways); error != kErrorSuccess) {
        return error;
    }
    std::vector<unsigned char> buffer(1 << 20);
    for (;;) {
        std::size_t got = 0;
        if (const ErrorCode error = source.Read(buffer.data(), buffer.size(), got); error) {
            return error;
        }
        if (got == 0) {
            return kErrorSuccess;
        }
        if (const ErrorCode error = target.Write(buffer.data(), got); error) {
            return error;
        }
    }
}

ErrorCode MakeDirectory(const std::u16string& path) {
    const std::string native = Native(path);
    return ::mkdir(native.c_str(), 0777) == 0 ? kErrorSuccess : PathError(native);
}

ErrorCode RemoveEmptyDirectory(const std::u16string& path) {
    const std::string native = Native(path);
    return ::rmdir(native.c_str()) == 0 ? kErrorSuccess : PathError(native);
}

ErrorCode CreateTempFile(const std::u16string& folder, const std::u16string& prefix,
                         std::u16string& path) {
    std::u16string base = folder;
    if (!base.empty() && base.back() != kPathSeparator) {
        base.push_back(kPathSeparator);
    }
    std::string pattern = Native(base + prefix) + "XXXXXX.tmp";
    const int fd = ::mkstemps(pattern.data(), 4);
    if (fd < 0) {
        return posix::LastError();
    }
    ::close(fd);
    path = Utf8ToUtf16(pattern);
    return kErrorSuccess;
}

}  // namespace platform
