#include "tools/dcf/ToolOutput.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>

#include "platform/ErrorText.h"
#include "platform/File.h"
#include "platform/Text.h"

namespace dcftool {

namespace {

std::string Prefix(const std::string& command) {
    return command.empty() ? "dcf: " : "dcf " + command + ": ";
}

}  // namespace

void FailWith(const std::string& command, const std::string& message, int code) {
    std::cerr << Prefix(command) << message << '\n';
    throw CLI::RuntimeError(code);
}

void Fail(const std::string& command, const std::string& message) {
    FailWith(command, message, kExitFailure);
}

void Note(const std::string& command, const std::string& message) {
    std::cerr << Prefix(command) << message << '\n';
}

std::string DescribeError(platform::ErrorCode error, const std::u16string& path) {
    if (error == platform::kErrorAccessDenied && !path.empty() && platform::IsDirectory(path)) {
        return "Is a directory";
    }
    std::string text = platform::Utf16ToUtf8(platform::SystemErrorText(error));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) {
        text.pop_back();
    }
    return text.empty() ? "error " + std::to_string(error) : text;
}

namespace {

// The length of the well-formed UTF-8 sequence that begins at `at`, or 0.
std::size_t Utf8SequenceAt(std::string_view text, std::size_t at) {
    for (std::size_t length = 2; length <= 4 && at + length <= text.size(); ++length) {
        if (platform::IsWellFormedUtf8(text.substr(at, length))) {
            return length;
        }
    }
    return 0;
}

}  // namespace

std::string Printable(std::string_view text) {
    static constexpr std::string_view kNamed = "\a\b\t\n\v\f\r";
    static constexpr std::string_view kLetters = "abtnvfr";
    std::string out;
    out.reserve(text.size());
    const auto octal = [&out](unsigned char byte) {
        out += '\\';
        for (const int shift : {6, 3, 0}) {
            out += static_cast<char>('0' + ((byte >> shift) & 7));
        }
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        if (byte == '\\') {
            out += "\\\\";
        } else if (const std::size_t named = kNamed.find(static_cast<char>(byte));
                   byte != 0 && named != std::string_view::npos) {
            out += '\\';
            out += kLetters[named];
        } else if (byte < 0x20 || byte == 0x7F) {
            octal(byte);
        } else if (byte == 0xC2 && next >= 0x80 && next <= 0x9F) {
            octal(byte);  // U+0080 to U+009F, the C1 controls, in UTF-8
            octal(next);
            ++i;
        } else if (byte < 0x80) {
            out += static_cast<char>(byte);
        } else if (const std::size_t length = Utf8SequenceAt(text, i); length > 0) {
            out.append(text.substr(i, length));
            i += length - 1;
        } else {
            char escaped[8];  // a byte that begins no UTF-8 sequence, shown by its value
            std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
            out += escaped;
        }
    }
    return out;
}

std::string Counted(std::uint64_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::u16string PathFromArgument(const std::string& argument) {
    if (!platform::IsWellFormedUtf8(argument)) {
        FailWith("",
                 Printable(argument) +
                     ": not UTF-8; dcf takes names in UTF-8 (rename the file, or run "
                     "convmv on it)",
                 kExitUsage);
    }
    return platform::Utf8ToUtf16(argument);
}

}  // namespace dcftool
