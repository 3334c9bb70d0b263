#pragma once
// The answer of a lookup that gives one text: a Windows error number, and the text on success.

#include <string>

#include "platform/ErrorCodes.h"

namespace platform {

struct NamedAnswer {
    ErrorCode Code = kErrorSuccess;
    std::u16string Text;
};

}  // namespace platform
