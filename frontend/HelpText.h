#pragma once
// The stub's help text, in the seven pieces that are written one after the other.

#include <array>
#include <string>
#include <string_view>

inline constexpr std::array<std::string_view, 7> kHelpTextPieces = {
    "Self-extraction archive: \r\n",
    "Run it without parameters or with undefined ones to show GUI and control extraction by "
    "it.\r\n",
    "For extraction from command line, use both of parameters -key and -target.\r\nParameters: ",
    "\r\n\t-h|-help\tPrint this help",
    "\r\n\t-key path\tSet path to private key for extraction",
    "\r\n\t-target path\tSet path to target directory for extraction",
    "\r\n\t-source path\tSet path to source archive to for extraction\r\n",
};

// Writes the seven pieces to standard output, then a line with the program's version.
void WriteHelpText();
