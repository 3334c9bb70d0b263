#include "platform/posix/Errno.h"

#include <cerrno>

namespace platform::posix {

ErrorCode FromErrno(int error) {
    switch (error) {
        case 0:
            return kErrorSuccess;
        case ENOENT:
            return kErrorFileNotFound;
        case ENOTDIR:
            return kErrorPathNotFound;
        case EACCES:
        case EPERM:
        case EISDIR:
            return kErrorAccessDenied;
        case EBADF:
            return kErrorInvalidHandle;
        case ENOMEM:
            return kErrorNotEnoughMemory;
        case EROFS:
            return kErrorWriteProtect;
        case EBUSY:
        case ETXTBSY:
            return kErrorSharingViolation;
        case EMFILE:
        case ENFILE:
            return kErrorTooManyOpenFiles;
        case EEXIST:
            return kErrorAlreadyExists;
        case EINVAL:
            return kErrorInvalidParameter;
        case ENOSPC:
        case EDQUOT:
            return kErrorDiskFull;
        case ENAMETOOLONG:
            return kErrorFilenameExcedRange;
        case ENOTEMPTY:
            return kErrorDirNotEmpty;
        case EXDEV:
            return kErrorNotSupported;
        case ENOTSUP:
            return kErrorNotSupported;
        case ELOOP:
            return kErrorStoppedOnSymlink;
        case ENODATA:
            return kErrorNotFound;
        default:
            return kErrorGenFailure;
    }
}

ErrorCode LastError() {
    return FromErrno(errno);
}

}  // namespace platform::posix
