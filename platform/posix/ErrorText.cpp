#include "platform/ErrorText.h"

#include <utility>

namespace platform {
namespace {

// The English system texts of the numbers that this platform's errno mapping produces.
constexpr std::pair<ErrorCode, const char16_t*> kTexts[] = {
    {kErrorSuccess, u"The operation completed successfully.\r\n"},
    {kErrorInvalidFunction, u"Incorrect function.\r\n"},
    {kErrorFileNotFound, u"The system cannot find the file specified.\r\n"},
    {kErrorPathNotFound, u"The system cannot find the path specified.\r\n"},
    {kErrorTooManyOpenFiles, u"The system cannot open the file.\r\n"},
    {kErrorAccessDenied, u"Access is denied.\r\n"},
    {kErrorInvalidHandle, u"The handle is invalid.\r\n"},
    {kErrorNotEnoughMemory,
     u"Not enough memory resources are available to process this command.\r\n"},
    {kErrorInvalidData, u"The data is invalid.\r\n"},
    {kErrorOutOfMemory,
     u"Not enough memory resources are available to complete this operation.\r\n"},
    {kErrorWriteProtect, u"The media is write protected.\r\n"},
    {kErrorGenFailure, u"A device attached to the system is not functioning.\r\n"},
    {kErrorSharingViolation,
     u"The process cannot access the file because it is being used by another process.\r\n"},
    {kErrorHandleEof, u"Reached the end of the file.\r\n"},
    {kErrorNotSupported, u"The request is not supported.\r\n"},
    {kErrorFileExists, u"The file exists.\r\n"},
    {kErrorInvalidParameter, u"The parameter is incorrect.\r\n"},
    {kErrorDiskFull, u"There is not enough space on the disk.\r\n"},
    {kErrorInsufficientBuffer, u"The data area passed to a system call is too small.\r\n"},
    {kErrorInvalidName, u"The filename, directory name, or volume label syntax is incorrect.\r\n"},
    {kErrorNegativeSeek,
     u"An attempt was made to move the file pointer before the beginning of the file.\r\n"},
    {kErrorDirNotEmpty, u"The directory is not empty.\r\n"},
    {kErrorAlreadyExists, u"Cannot create a file when that file already exists.\r\n"},
    {kErrorFilenameExcedRange, u"The filename or extension is too long.\r\n"},
    {kErrorNoMoreItems, u"No more data is available.\r\n"},
    {kErrorDirectory, u"The directory name is invalid.\r\n"},
    {kErrorStoppedOnSymlink, u"The create operation stopped after reaching a symbolic link.\r\n"},
    {kErrorNotFound, u"Element not found.\r\n"},
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
