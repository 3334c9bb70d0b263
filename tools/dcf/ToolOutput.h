#pragma once
// How the commands of dcf report: messages on standard error, failures as CLI11 errors that end
// the program with their exit code.

#include <cstdint>
#include <string>

#include "platform/ErrorCodes.h"

namespace dcf {

inline constexpr int kExitFailure = 1;

// Prints "dcf <command>: <message>" and ends the command with kExitFailure.
[[noreturn]] void Fail(const std::string& command, const std::string& message);

// A message for a Windows error number: the system's text with the number.
std::string DescribeError(platform::ErrorCode error);

// "1 file", "2 files": a count with its noun, plural unless the count is one.
std::string Counted(std::uint64_t count, const std::string& noun);

// Native paths of the tool's arguments, which arrive as UTF-8.
std::u16string PathFromArgument(const std::string& argument);

}  // namespace dcf
