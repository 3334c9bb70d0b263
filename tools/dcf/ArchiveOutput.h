#pragma once
// How the archive commands of dcf end: exit codes by kind of failure, and the mapping of the
// archive code's results onto them.

#include <string>

#include "archive/ResultCodes.h"

namespace dcf {

// Exit codes of dcf (0 is done; kExitFailure of ToolOutput.h is 1, any other failure).
inline constexpr int kExitUsage = 2;
inline constexpr int kExitBadKey = 3;
inline constexpr int kExitDamaged = 4;
inline constexpr int kExitIo = 5;
inline constexpr int kExitCancelled = 6;

// Prints "dcf <command>: <message>" and ends the command with `code`.
[[noreturn]] void FailWith(const std::string& command, const std::string& message, int code);

// Ends the command for a result of the archive code other than FORMAT_OK, naming `file`.
[[noreturn]] void FailWithResult(const std::string& command, const std::string& file,
                                 FormatResult result);

}  // namespace dcf
