#pragma once
// How the commands of dcf report: messages on standard error, failures as CLI11 errors that end
// the program with their exit code.

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/ErrorCodes.h"

namespace dcf {

inline constexpr int kExitFailure = 1;

// Prints "dcf <command>: <message>" and ends the command with kExitFailure.
[[noreturn]] void Fail(const std::string& command, const std::string& message);

// A message for a Windows error number: the system's text with the number.
std::string DescribeError(platform::ErrorCode error);

// Text from an archive made safe for a terminal, as bsdtar does: a control character (C0, DEL
// or C1) becomes "\n", "\t" and the like or octal "\ooo" per byte, and a backslash "\\", so
// that no name can move the cursor, retitle the window or hide what follows.
std::string Printable(std::string_view utf8);

// "1 file", "2 files": a count with its noun, plural unless the count is one.
std::string Counted(std::uint64_t count, const std::string& noun);

// Native paths of the tool's arguments, which arrive as UTF-8.
std::u16string PathFromArgument(const std::string& argument);

}  // namespace dcf
