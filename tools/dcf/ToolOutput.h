#pragma once
// How the commands of dcf report: messages on standard error, failures as CLI11 errors that end
// the program with their exit code.

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/ErrorCodes.h"

namespace dcftool {

// Exit codes of dcf; 0 is done.
inline constexpr int kExitFailure = 1;  // any other failure
inline constexpr int kExitUsage = 2;
inline constexpr int kExitBadKey = 3;
inline constexpr int kExitDamaged = 4;
inline constexpr int kExitIo = 5;
inline constexpr int kExitCancelled = 6;

// Prints "dcf <command>: <message>" ("dcf: <message>" without a command) and ends the command
// with `code`.
[[noreturn]] void FailWith(const std::string& command, const std::string& message, int code);
// The same with kExitFailure.
[[noreturn]] void Fail(const std::string& command, const std::string& message);
// "dcf <command>: <message>" on standard error; the command goes on.
void Note(const std::string& command, const std::string& message);

// The system's words for a Windows error number, as a user of this system reads them. With the
// `path` that failed, a folder opened as a file is "Is a directory", where the portable code
// answers "access denied" as Windows does.
std::string DescribeError(platform::ErrorCode error, const std::u16string& path = {});

// Text from an archive or the system made safe for a terminal, as bsdtar does: a control
// character (C0, DEL or C1) becomes "\n", "\t" and the like or octal "\ooo" per byte, a
// backslash "\\", and a byte that is no UTF-8 "\xE9", so that no name can move the cursor,
// retitle the window or hide what follows.
std::string Printable(std::string_view text);

// "1 file", "2 files": a count with its noun, plural unless the count is one.
std::string Counted(std::uint64_t count, const std::string& noun);

// Native paths of the tool's arguments, which must be UTF-8: the archive holds UTF-16 names, and
// a byte that is no UTF-8 has no place in them. Ends the program as a usage error otherwise.
std::u16string PathFromArgument(const std::string& argument);

}  // namespace dcftool
