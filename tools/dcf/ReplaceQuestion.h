#pragma once
// The question asked on the terminal when a file is in the way.

#include <span>
#include <string>
#include <string_view>

#include "archive/ResultCodes.h"

// One answer: typed as the first letter of its label.
struct ReplaceChoice {
    std::string_view label;
    OverwriteMode answer;
};

// Asks "<path> exists. Replace it? [y]es, [n]o, ...: " on standard error until a line begins
// with the first letter of a label, in either case. The choice made; nullptr when the input
// ended or Ctrl-C was pressed.
const ReplaceChoice* AskReplaceOnTerminal(const std::u16string& path,
                                          std::span<const ReplaceChoice> choices);
