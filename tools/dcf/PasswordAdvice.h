#pragma once
// What dcf tells about a password of a new archive. The format derives its key with 100 rounds
// of PBKDF2, which a guesser runs fast: the password itself must carry the strength.

#include <optional>
#include <string>
#include <string_view>

namespace dcftool {

// A rough estimate of the guesses a password takes, in bits: the characters' classes and length,
// with repeats, runs such as "abc" or "123" and well-known passwords counting for little.
double PasswordStrengthBits(std::u16string_view password);

// The warning for a typed password of fewer bits than a strong one has; nothing for a strong one.
std::optional<std::string> WeakPasswordWarning(std::u16string_view password);

// The warning for characters beyond Latin-1, which the format cuts to their low byte; nothing
// when there are none.
std::optional<std::string> CutCharactersWarning(std::u16string_view password);

}  // namespace dcftool
