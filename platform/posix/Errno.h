#pragma once
// errno -> Windows error number.

#include "platform/ErrorCodes.h"

namespace platform::posix {

ErrorCode FromErrno(int error);
// The current errno, mapped.
ErrorCode LastError();

}  // namespace platform::posix
