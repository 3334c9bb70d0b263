#include "platform/PrivateFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/Text.h"
#include "platform/posix/Errno.h"

namespace platform {

namespace {

ErrorCode WriteAll(int fd, const unsigned char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return posix::LastError();
        }
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return kErrorSuccess;
}

}  // namespace

ErrorCode WritePrivateFile(const std::u16string& path, const void* data, std::size_t size,
                           bool replace) {
    const std::string native = Utf16ToUtf8(path);
    const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | (replace ? O_TRUNC : O_EXCL);
    const int fd = ::open(native.c_str(), flags, S_IRUSR | S_IWUSR);
    if (fd < 0) {
        return errno == EEXIST ? kErrorFileExists : posix::LastError();
    }
    // A replaced file keeps its old mode unless told otherwise.
    ErrorCode error = ::fchmod(fd, S_IRUSR | S_IWUSR) == 0 ? kErrorSuccess : posix::LastError();
    if (error == kErrorSuccess) {
        error = WriteAll(fd, static_cast<const unsigned char*>(data), size);
    }
    if (::close(fd) != 0 && error == kErrorSuccess) {
        error = posix::LastError();
    }
    return error;
}

}  // namespace platform
