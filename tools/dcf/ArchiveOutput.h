#pragma once
// How the archive commands of dcf end: the mapping of the archive code's results onto the exit
// codes of ToolOutput.h.

#include <string>

#include "archive/Archive.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

// Ends the command for a result of the archive code other than FORMAT_OK, naming `file`.
[[noreturn]] void FailWithResult(const std::string& command, const std::string& file,
                                 FormatResult result);

}  // namespace dcftool
