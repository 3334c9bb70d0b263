#pragma once
// The *.privkey text: a name line, five lines of 512 hexadecimal digits, one line that is
// skipped, and optionally a creation time and a validity in years. Lines end with LF, and any
// CR or LF at a line's end is cut off. DCCSecurityKey::PrivateFromFile and
// DCCSecurityKey::ParsePrivateKeyText read it; these are their steps.

#include <cstdint>
#include <string_view>

#include "Common/Common/SystemTime.h"

namespace Zelmarik {

// Hexadecimal digits in one number line of a key file.
inline constexpr std::size_t kKeyNumberDigits = 512;
// A key file is under 4 KiB; a longer one than this is refused without being read.
inline constexpr std::uint64_t kLongestKeyFile = 64 * 1024;

// Takes one number line off the front of `text` into 64 words, and moves `text` behind its
// line end; false, with `text` unmoved, when the line has no line end or is not exactly
// kKeyNumberDigits characters long.
bool ParseKeyNumberLine(const char*& text, std::uint32_t* number);

// Reads "day.month.year, hour:minute"; false when fewer than five fields match, leaving `time`
// untouched. Day of the week, seconds and milliseconds become zero.
bool ParseKeyDate(std::string_view line, SystemTime& time);

}  // namespace Zelmarik
