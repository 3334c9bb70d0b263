#pragma once
// The stub's help text, in pieces that are written one after the other: on Windows the seven
// pieces of the dialog stub, on a terminal words of its own; then the version.

#include <span>
#include <string_view>

std::span<const std::string_view> HelpTextPieces();

// Writes the pieces to standard output; the last is a line with the program's version.
void WriteHelpText();
