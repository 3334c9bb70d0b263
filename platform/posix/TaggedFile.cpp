#include "platform/TaggedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>
#include <string_view>

#include "platform/Text.h"
#include "platform/posix/Errno.h"

namespace platform {
namespace {

constexpr std::u16string_view kLongPrefix = u"\\\\?\\";
constexpr std::u16string_view kLongUncPrefix = u"\\\\?\\UNC\\";
constexpr char kAttributePrefix[] = "user.";
constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;

// A stream kept as an extended attribute: every write replaces the whole value, so the content
// written so far stays here between the writes.
struct XattrStream {
    std::string file;
    std::string attribute;
    std::vector<std::uint8_t> content;
    std::size_t position = 0;
};

// The path without its long-path prefix, in UTF-8.
std::string NativePath(std::u16string_view path) {
    if (path.starts_with(kLongUncPrefix)) {
        return "\\\\" + Utf16ToUtf8(path.substr(kLongUncPrefix.size()));
    }
    if (path.starts_with(kLongPrefix)) {
        path.remove_prefix(kLongPrefix.size());
    }
    return Utf16ToUtf8(path);
}

// Splits "<file>:<stream>" at the last colon of its last component; false when there is none.
bool SplitStreamPath(const std::u16string& streamPath, std::string& file, std::string& attribute) {
    const std::string native = NativePath(streamPath);
    const std::size_t colon = native.find_last_of(':');
    const std::size_t slash = native.find_last_of('/');
    if (colon == std::string::npos || (slash != std::string::npos && colon < slash) ||
        colon + 1 == native.size()) {
        return false;
    }
    file = native.substr(0, colon);
    attribute = kAttributePrefix + native.substr(colon + 1);
    return true;
}

// errno of a failed extended attribute call: no support is a missing stream.
ErrorCode XattrError() {
    switch (errno) {
        case ENOTSUP:
#if EOPNOTSUPP != ENOTSUP
        case EOPNOTSUPP:
#endif
        case ENODATA:
            return kErrorFileNotFound;
        case E2BIG:
            return kErrorDiskFull;
        default:
            return posix::LastError();
    }
}

XattrStream* Stream(TagHandle handle) {
    return handle == 0 || handle == kInvalidTagHandle ? nullptr
                                                      : reinterpret_cast<XattrStream*>(handle);
}

int Fd(TagHandle handle) {
    return static_cast<int>(handle);
}

bool IsReadOnly(mode_t mode) {
    return (mode & kAnyWrite) == 0;
}

std::uint64_t ToStamp(const timespec& time) {
    const std::int64_t nanoseconds =
        static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
    return static_cast<std::uint64_t>(nanoseconds);
}

timespec FromStamp(std::uint64_t stamp) {
    const auto nanoseconds = static_cast<std::int64_t>(stamp);
    std::int64_t seconds = nanoseconds / 1'000'000'000;
    std::int64_t rest = nanoseconds % 1'000'000'000;
    if (rest < 0) {
        rest += 1'000'000'000;
        --seconds;
    }
    timespec time{};
    time.tv_sec = static_cast<time_t>(seconds);
    time.tv_nsec = static_cast<long>(rest);
    return time;
}

FileStamps StampsOf(const struct stat& info) {
    FileStamps stamps;
    stamps.LastAccess = ToStamp(info.st_atim);
    stamps.LastWrite = ToStamp(info.st_mtim);
    return stamps;
}

std::uint32_t AttributesOf(mode_t mode) {
    std::uint32_t attributes = 0;
    if (S_ISDIR(mode)) {
        attributes |= kFileAttributeDirectory;
    }
    if (IsReadOnly(mode)) {
        attributes |= kFileAttributeReadOnly;
    }
    return attributes == 0 ? kFileAttributeNormal : attributes;
}

// The permission bits that carry the read-only state of `attributes`.
mode_t ModeWithAttributes(mode_t mode, std::uint32_t attributes) {
    mode &= 07777;
    if ((attributes & kFileAttributeReadOnly) != 0) {
        return mode & ~kAnyWrite;
    }
    return IsReadOnly(mode) ? mode | S_IWUSR : mode;
}

}  // namespace

ErrorCode OpenTaggedFile(const std::u16string& path, TagHandle& handle) {
    handle = kInvalidTagHandle;
    const std::string native = NativePath(path);
    int fd = ::open(native.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | O_NOFOLLOW);
    if (fd == 0) {  // 0 means "no handle" to the tagger
        const int moved = ::fcntl(fd, F_DUPFD_CLOEXEC, 1);
        ::close(fd);
        fd = moved;
    }
    if (fd < 0) {
        return posix::LastError();
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0) {
        const ErrorCode error = posix::LastError();
        ::close(fd);
        return error;
    }
    // Write permission bits stand for the read-only attribute, for root too.
    if (IsReadOnly(info.st_mode)) {
        ::close(fd);
        return kErrorAccessDenied;
    }
    handle = fd;
    return kErrorSuccess;
}

void CloseTaggedFile(TagHandle file) {
    if (file > 0) {
        ::close(Fd(file));
    }
}

ErrorCode ReadFileStamps(TagHandle file, FileStamps& stamps) {
    struct stat info {};
    if (::fstat(Fd(file), &info) != 0) {
        return posix::LastError();
    }
    stamps = StampsOf(info);
    return kErrorSuccess;
}

ErrorCode RestoreFileStamps(TagHandle file, const FileStamps& stamps, std::uint32_t attributes) {
    const timespec times[2] = {FromStamp(stamps.LastAccess), FromStamp(stamps.LastWrite)};
    ErrorCode result = ::futimens(Fd(file), times) == 0 ? kErrorSuccess : posix::LastError();
    if (attributes != 0) {
        struct stat info {};
        if (::fstat(Fd(file), &info) != 0 ||
            ::fchmod(Fd(file), ModeWithAttributes(info.st_mode, attributes)) != 0) {
            result = result != kErrorSuccess ? result : posix::LastError();
        }
    }
    return result;
}

ErrorCode GetPathAttributes(const std::u16string& path, std::uint32_t& attributes) {
    attributes = kInvalidTagValue;
    struct stat info {};
    if (::lstat(NativePath(path).c_str(), &info) != 0) {
        return posix::LastError();
    }
    attributes = AttributesOf(info.st_mode);
    return kErrorSuccess;
}

ErrorCode SetPathAttributes(const std::u16string& path, std::uint32_t attributes) {
    const std::string native = NativePath(path);
    struct stat info {};
    if (::lstat(native.c_str(), &info) != 0) {
        return posix::LastError();
    }
    if (S_ISLNK(info.st_mode)) {
        return kErrorStoppedOnSymlink;  // chmod would change what the link points to
    }
    return ::chmod(native.c_str(), ModeWithAttributes(info.st_mode, attributes)) == 0
               ? kErrorSuccess
               : posix::LastError();
}

ErrorCode OpenTagStream(const std::u16string& streamPath, TagHandle& handle) {
    handle = kInvalidTagHandle;
    auto stream = std::make_unique<XattrStream>();
    if (!SplitStreamPath(streamPath, stream->file, stream->attribute)) {
        return kErrorInvalidName;
    }
    if (::lsetxattr(stream->file.c_str(), stream->attribute.c_str(), "", 0, 0) != 0) {
        return XattrError();
    }
    handle = reinterpret_cast<TagHandle>(stream.release());
    return kErrorSuccess;
}

ErrorCode TagStreamSize(TagHandle handle, std::uint32_t& size) {
    size = kInvalidTagValue;
    const XattrStream* stream = Stream(handle);
    if (stream == nullptr) {
        return kErrorInvalidHandle;
    }
    size = static_cast<std::uint32_t>(stream->content.size());
    return kErrorSuccess;
}

ErrorCode SeekTagStreamEnd(TagHandle handle, std::uint32_t& position) {
    position = kInvalidTagValue;
    XattrStream* stream = Stream(handle);
    if (stream == nullptr) {
        return kErrorInvalidHandle;
    }
    stream->position = stream->content.size();
    position = static_cast<std::uint32_t>(stream->position);
    return kErrorSuccess;
}

ErrorCode WriteTagRecord(TagHandle handle, std::span<const std::uint8_t, 16> record) {
    XattrStream* stream = Stream(handle);
    if (stream == nullptr) {
        return kErrorInvalidHandle;
    }
    try {
        std::vector<std::uint8_t> content = stream->content;
        content.resize(std::max(content.size(), stream->position + record.size()));
        std::copy(record.begin(), record.end(), content.begin() + stream->position);
        if (::lsetxattr(stream->file.c_str(), stream->attribute.c_str(), content.data(),
                        content.size(), 0) != 0) {
            return XattrError();
        }
        stream->content = std::move(content);
    } catch (const std::bad_alloc&) {
        return kErrorNotEnoughMemory;
    }
    stream->position += record.size();
    return kErrorSuccess;
}

void CloseTagStream(TagHandle handle) {
    delete Stream(handle);
}

ErrorCode DeleteTagStream(const std::u16string& streamPath) {
    std::string file;
    std::string attribute;
    if (!SplitStreamPath(streamPath, file, attribute)) {
        return kErrorInvalidName;
    }
    return ::lremovexattr(file.c_str(), attribute.c_str()) == 0 ? kErrorSuccess : XattrError();
}

ErrorCode ReadTagStream(const std::u16string& streamPath, std::vector<std::uint8_t>& content) {
    content.clear();
    std::string file;
    std::string attribute;
    if (!SplitStreamPath(streamPath, file, attribute)) {
        return kErrorInvalidName;
    }
    for (;;) {
        const ssize_t size = ::lgetxattr(file.c_str(), attribute.c_str(), nullptr, 0);
        if (size < 0) {
            return XattrError();
        }
        content.resize(static_cast<std::size_t>(size));
        const ssize_t got =
            ::lgetxattr(file.c_str(), attribute.c_str(), content.data(), content.size());
        if (got >= 0) {
            content.resize(static_cast<std::size_t>(got));
            return kErrorSuccess;
        }
        if (errno != ERANGE) {  // ERANGE: the value grew between the two calls
            content.clear();
            return XattrError();
        }
    }
}

ErrorCode ReadPathStamps(const std::u16string& path, FileStamps& stamps) {
    struct stat info {};
    if (::lstat(NativePath(path).c_str(), &info) != 0) {
        return posix::LastError();
    }
    stamps = StampsOf(info);
    return kErrorSuccess;
}

}  // namespace platform
