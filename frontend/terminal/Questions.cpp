#include <algorithm>
#include <cctype>

#include "frontend/terminal/TerminalUi.h"
#include "platform/SecureMemory.h"
#include "platform/Text.h"

namespace terminal {

namespace {

// Room for what anyone types as a password; a longer line is cut, and refused as too long.
constexpr std::size_t kSecretRoom = 1024;

int Lower(char letter) {
    return std::tolower(static_cast<unsigned char>(letter));
}

}  // namespace

std::optional<std::size_t> AskChoice(std::string_view question,
                                     std::span<const std::string_view> choices) {
    std::string prompt(question);
    for (std::size_t i = 0; i < choices.size(); ++i) {
        prompt += (i == 0 ? "[" : ", [") + std::string(1, choices[i].front()) + "]" +
                  std::string(choices[i].substr(1));
    }
    prompt += ": ";
    for (;;) {
        std::string answer;
        if (!platform::ReadTerminalLine(prompt, answer)) {
            return std::nullopt;
        }
        for (std::size_t i = 0; i < choices.size(); ++i) {
            if (!answer.empty() && Lower(answer.front()) == Lower(choices[i].front())) {
                return i;
            }
        }
    }
}

std::optional<std::string> AskLine(std::string_view prompt, platform::LineEditing editing) {
    std::string line;
    if (!platform::ReadTerminalLine(prompt, line, editing)) {
        return std::nullopt;
    }
    return line;
}

std::optional<Zelmarik::SecureU16String> AskSecret(std::string_view prompt) {
    Zelmarik::SecureVector<char> typed(kSecretRoom);
    const std::optional<std::size_t> length = platform::ReadTerminalSecret(prompt, typed);
    if (!length) {
        return std::nullopt;
    }
    // UTF-16 never needs more units than UTF-8 has bytes: the conversion allocates once. A line
    // cut at the room is still longer than any password may be.
    std::u16string text =
        platform::Utf8ToUtf16(std::string_view(typed.data(), std::min(*length, typed.size())));
    Zelmarik::SecureU16String secret(text);
    platform::SecureWipe(text.data(), text.capacity() * sizeof(char16_t));
    return secret;
}

}  // namespace terminal
