#pragma once
// Text for the --json output of dcf.

#include <string>
#include <string_view>

namespace dcftool {

// `text` (UTF-8) as a JSON string literal, quotes included.
std::string JsonString(std::string_view text);

}  // namespace dcftool
