#include "tools/dcf/PasswordAdvice.h"

#include <algorithm>
#include <cmath>

#include "platform/Text.h"

namespace dcftool {

namespace {

// Below this a password falls to one graphics card within a few years.
constexpr double kStrongBits = 50;
// Guesses a second of one graphics card against 100 rounds of PBKDF2 with HMAC-SHA-256.
constexpr double kGuessesPerSecond = 5e6;

// Passwords that guessers try first, lower case.
constexpr std::u16string_view kWellKnown[] = {
    u"password", u"passw0rd", u"123456",   u"qwerty", u"letmein", u"secret",
    u"admin",    u"welcome",  u"iloveyou", u"monkey", u"dragon",  u"abc123",
    u"football", u"sunshine", u"princess", u"master", u"111111",  u"123123"};

enum Class { kLower, kUpper, kDigit, kSymbol, kOther };

Class ClassOf(char16_t c) {
    if (c >= u'a' && c <= u'z') {
        return kLower;
    }
    if (c >= u'A' && c <= u'Z') {
        return kUpper;
    }
    if (c >= u'0' && c <= u'9') {
        return kDigit;
    }
    return c < 0x80 ? kSymbol : kOther;
}

// Bits of the characters drawn from the classes that occur in the password.
double PoolBits(std::u16string_view password) {
    constexpr double kSizes[] = {26, 26, 10, 33, 100};
    bool seen[5] = {};
    for (const char16_t c : password) {
        seen[ClassOf(c)] = true;
    }
    double pool = 0;
    for (int i = 0; i < 5; ++i) {
        pool += seen[i] ? kSizes[i] : 0;
    }
    return std::log2(std::max(pool, 2.0));
}

std::u16string Lower(std::u16string_view text) {
    std::u16string lower(text);
    for (char16_t& c : lower) {
        c = ClassOf(c) == kUpper ? static_cast<char16_t>(c - u'A' + u'a') : c;
    }
    return lower;
}

std::string TimeToGuess(double bits) {
    const double seconds = std::exp2(bits) / 2 / kGuessesPerSecond;
    struct Unit {
        double seconds;
        const char* name;
    };
    constexpr Unit kUnits[] = {
        {365.25 * 86400, "years"}, {86400, "days"}, {3600, "hours"}, {60, "minutes"}};
    if (seconds < 60) {
        return "less than a minute";
    }
    for (const Unit& unit : kUnits) {
        if (seconds >= unit.seconds) {
            return "about " + std::to_string(static_cast<long long>(seconds / unit.seconds)) + " " +
                   unit.name;
        }
    }
    return "minutes";
}

}  // namespace

double PasswordStrengthBits(std::u16string_view password) {
    const double each = PoolBits(password);
    double bits = 0;
    for (std::size_t i = 0; i < password.size(); ++i) {
        const int step = i == 0 ? 0 : password[i] - password[i - 1];
        bits += i > 0 && std::abs(step) <= 1 ? 1 : each;  // "aaa", "abc", "321" add little
    }
    const std::u16string lower = Lower(password);
    for (const std::u16string_view known : kWellKnown) {
        if (lower.starts_with(known)) {
            // A well-known password with a few characters behind it, as "Password1!".
            bits = std::min(bits, 10 + each * static_cast<double>(lower.size() - known.size()));
        }
    }
    return bits;
}

std::optional<std::string> WeakPasswordWarning(std::u16string_view password) {
    const double bits = PasswordStrengthBits(password);
    if (bits >= kStrongBits) {
        return std::nullopt;
    }
    return "warning: this password is easy to guess: about " +
           std::to_string(static_cast<int>(bits)) + " bits, which one graphics card finds in " +
           TimeToGuess(bits) +
           ", as the archive's key derivation is fast. Use a longer passphrase of several "
           "unrelated words, or seal the archive for the recipient's key with --recipient.";
}

std::optional<std::string> CutCharactersWarning(std::u16string_view password) {
    std::u16string cut;
    bool ends = false;
    for (const char16_t c : password) {
        if (c > 0xFF && cut.find(c) == std::u16string::npos) {
            cut.push_back(c);
            ends = ends || (c & 0xFF) == 0;
        }
    }
    if (cut.empty()) {
        return std::nullopt;
    }
    return "warning: the archive keeps only the low byte of each character beyond Latin-1 (" +
           platform::Utf16ToUtf8(cut) + "), so other passwords open it too" +
           (ends ? "; a character whose low byte is zero ends the password where it stands" : "") +
           ".";
}

}  // namespace dcftool
