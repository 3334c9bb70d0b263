// A small line editor for typed paths: the terminal's own editing can't complete with Tab.
#include <algorithm>

#include "platform/Terminal.h"
#include "platform/posix/TerminalDevice.h"

namespace platform::posix {
namespace {

constexpr char kBackspace = 0x08;
constexpr char kDelete = 0x7f;
constexpr char kEndOfText = 0x04;  // Ctrl-D
constexpr char kKillLine = 0x15;   // Ctrl-U
constexpr char kEscape = 0x1b;

void Show(std::string_view text) {
    WriteAll(Terminal().output, text);
}

bool IsContinuationByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Takes the last character (all bytes of it) off the line and off the screen.
void EraseLastCharacter(std::string& line) {
    while (!line.empty() && IsContinuationByte(line.back())) {
        line.pop_back();
    }
    if (!line.empty()) {
        line.pop_back();
        Show("\b \b");
    }
}

// The bytes of an escape sequence (an arrow key, ...), which the editor does not use.
void SkipEscapeSequence(unsigned seen) {
    char byte = 0;
    if (ReadInputByte(seen, byte) != Input::Byte || (byte != '[' && byte != 'O')) {
        return;
    }
    while (ReadInputByte(seen, byte) == Input::Byte && (byte < 0x40 || byte > 0x7e)) {
    }
}

std::string CommonPrefix(const std::vector<std::string>& names) {
    std::string common = names.front();
    for (const std::string& name : names) {
        const auto differ = std::mismatch(common.begin(), common.end(), name.begin(), name.end());
        common.erase(differ.first, common.end());
    }
    return common;
}

// Tab: completes as far as the names that fit agree; a second Tab that adds nothing lists them.
void Complete(std::string_view prompt, std::string& line, bool listIfStuck) {
    const std::vector<std::string> names = PathCompletions(line);
    if (names.empty()) {
        return;
    }
    const std::size_t slash = line.rfind('/');
    const std::size_t typed = line.size() - (slash == std::string::npos ? 0 : slash + 1);
    const std::string added = CommonPrefix(names).substr(typed);
    if (!added.empty()) {
        line += added;
        Show(added);
        return;
    }
    if (listIfStuck && names.size() > 1) {
        std::string list = "\n";
        for (const std::string& name : names) {
            list += name + "  ";
        }
        Show(list + "\n" + std::string(prompt) + line);
    }
}

}  // namespace

bool EditPathLine(std::string_view prompt, std::string& line, unsigned seen) {
    const TerminalModes raw(ECHO | ICANON);
    Show(prompt);
    bool afterTab = false;
    for (;;) {
        char byte = 0;
        const Input input = ReadInputByte(seen, byte);
        if (input != Input::Byte || (byte == kEndOfText && line.empty())) {
            Show("\n");
            return false;
        }
        const bool tab = byte == '\t';
        if (byte == '\r' || byte == '\n') {
            Show("\n");
            return true;
        } else if (tab) {
            Complete(prompt, line, afterTab);
        } else if (byte == kDelete || byte == kBackspace) {
            EraseLastCharacter(line);
        } else if (byte == kKillLine) {
            while (!line.empty()) {
                EraseLastCharacter(line);
            }
        } else if (byte == kEscape) {
            SkipEscapeSequence(seen);
        } else if (static_cast<unsigned char>(byte) >= 0x20) {
            line.push_back(byte);
            Show(std::string_view(&byte, 1));
        }
        afterTab = tab;
    }
}

}  // namespace platform::posix
