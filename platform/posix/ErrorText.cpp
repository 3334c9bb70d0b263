#include "platform/ErrorText.h"

#include <utility>

namespace platform {
namespace {

// What strerror says, in English, for the errno that each number stands for here (Errno.cpp);
// the numbers that no errno gives have words in the same style.
constexpr std::pair<ErrorCode, const char16_t*> kTexts[] = {
    {kErrorSuccess, u"Success"},
    {kErrorInvalidFunction, u"Function not implemented"},
    {kErrorFileNotFound, u"No such file or directory"},
    {kErrorPathNotFound, u"No such file or directory"},
    {kErrorTooManyOpenFiles, u"Too many open files"},
    {kErrorAccessDenied, u"Permission denied"},
    {kErrorInvalidHandle, u"Bad file descriptor"},
    {kErrorNotEnoughMemory, u"Cannot allocate memory"},
    {kErrorInvalidData, u"Invalid data"},
    {kErrorOutOfMemory, u"Cannot allocate memory"},
    {kErrorWriteProtect, u"Read-only file system"},
    {kErrorGenFailure, u"Input/output error"},
    {kErrorSharingViolation, u"Device or resource busy"},
    {kErrorHandleEof, u"Unexpected end of file"},
    {kErrorNotSupported, u"Operation not supported"},
    {kErrorFileExists, u"File exists"},
    {kErrorInvalidParameter, u"Invalid argument"},
    {kErrorDiskFull, u"No space left on device"},
    {kErrorInsufficientBuffer, u"Buffer too small"},
    {kErrorInvalidName, u"Invalid file name"},
    {kErrorNegativeSeek, u"Invalid argument"},
    {kErrorDirNotEmpty, u"Directory not empty"},
    {kErrorAlreadyExists, u"File exists"},
    {kErrorFilenameExcedRange, u"File name too long"},
    {kErrorNoMoreItems, u"No more data"},
    {kErrorDirectory, u"Not a directory"},
    {kErrorStoppedOnSymlink, u"Too many levels of symbolic links"},
    {kErrorNotFound, u"No data available"},
};

}  // namespace

std::u16string SystemErrorText(ErrorCode code) {
    for (const auto& [number, text] : kTexts) {
        if (number == code) {
            return text;
        }
    }
    return {};
}

}  // namespace platform
