#pragma once
// UTF-16 <-> UTF-8 conversion. The portable code keeps text as UTF-16 everywhere; these run at
// the platform boundary. Malformed input never fails: an unpaired surrogate or a bad UTF-8
// sequence becomes U+FFFD.

#include <string>
#include <string_view>

namespace platform {

std::string Utf16ToUtf8(std::u16string_view text);
// The result is sized once for the longest outcome and never moves while it grows, so that no
// copy of a secret text is left in freed memory.
std::u16string Utf8ToUtf16(std::string_view text);

// True when `text` converts to UTF-16 and back unchanged: no byte of it would be replaced.
bool IsWellFormedUtf8(std::string_view text);

}  // namespace platform
