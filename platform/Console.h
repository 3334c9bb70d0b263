#pragma once
// Console output of the programs. Text is UTF-8 (narrow) and goes out unchanged.

#include <string_view>

namespace platform {

void WriteStandardOutput(std::string_view text);
void WriteStandardError(std::string_view text);

}  // namespace platform
