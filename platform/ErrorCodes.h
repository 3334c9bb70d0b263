#pragma once
// Windows error numbers: the one error language of the portable code on every platform.
// platform/posix maps errno onto these.

#include <cstdint>

namespace platform {

using ErrorCode = std::uint32_t;

inline constexpr ErrorCode kErrorSuccess = 0;
inline constexpr ErrorCode kErrorInvalidFunction = 1;
inline constexpr ErrorCode kErrorFileNotFound = 2;
inline constexpr ErrorCode kErrorPathNotFound = 3;
inline constexpr ErrorCode kErrorTooManyOpenFiles = 4;
inline constexpr ErrorCode kErrorAccessDenied = 5;
inline constexpr ErrorCode kErrorInvalidHandle = 6;
inline constexpr ErrorCode kErrorNotEnoughMemory = 8;
inline constexpr ErrorCode kErrorInvalidData = 13;
inline constexpr ErrorCode kErrorOutOfMemory = 14;
inline constexpr ErrorCode kErrorWriteProtect = 19;
inline constexpr ErrorCode kErrorGenFailure = 31;
inline constexpr ErrorCode kErrorSharingViolation = 32;
inline constexpr ErrorCode kErrorHandleEof = 38;
inline constexpr ErrorCode kErrorNotSupported = 50;
inline constexpr ErrorCode kErrorFileExists = 80;
inline constexpr ErrorCode kErrorInvalidParameter = 87;
inline constexpr ErrorCode kErrorDiskFull = 112;
inline constexpr ErrorCode kErrorInsufficientBuffer = 122;
inline constexpr ErrorCode kErrorInvalidName = 123;
inline constexpr ErrorCode kErrorNegativeSeek = 131;
inline constexpr ErrorCode kErrorDirNotEmpty = 145;
inline constexpr ErrorCode kErrorAlreadyExists = 183;
inline constexpr ErrorCode kErrorFilenameExcedRange = 206;
inline constexpr ErrorCode kErrorNoMoreItems = 259;
inline constexpr ErrorCode kErrorDirectory = 267;
inline constexpr ErrorCode kErrorStoppedOnSymlink = 681;
inline constexpr ErrorCode kErrorNotFound = 1168;

}  // namespace platform
