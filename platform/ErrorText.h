#pragma once
// The system's description of a Windows error number, as FormatMessage gives it in English:
// "Access is denied.\r\n". Empty when the system has no text for the number.

#include <string>

#include "platform/ErrorCodes.h"

namespace platform {

std::u16string SystemErrorText(ErrorCode code);

}  // namespace platform
