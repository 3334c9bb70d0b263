#pragma once
// Console output of the programs: text goes to the C standard streams unchanged, so that it
// reaches a console or a redirection alike.

#include <string_view>

namespace platform {

// Gives a program without usable standard streams (a Windows GUI program) its parent's console,
// or a new one, and binds the standard streams to it unless they are redirected. Elsewhere the
// streams are used as they are. False when no console could be had.
bool AttachProcessConsole();

void WriteStandardOutput(std::string_view text);
void WriteStandardError(std::string_view text);

}  // namespace platform
