#pragma once
// The system's description of a Windows error number in English, in the words a user of the
// platform reads: on Windows FormatMessage's sentence with its line end ("Access is
// denied.\r\n"), elsewhere the C library's words for the errno behind the number ("Permission
// denied"). Empty when the system has no text for the number.

#include <string>

#include "platform/ErrorCodes.h"

namespace platform {

std::u16string SystemErrorText(ErrorCode code);

}  // namespace platform
