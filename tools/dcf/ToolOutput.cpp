#include "tools/dcf/ToolOutput.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>

#include "platform/ErrorText.h"
#include "platform/File.h"
#include "platform/Text.h"

namespace dcf {

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

std::string Printable(std::string_view bytes) {
    std::string out;
    std::size_t i = 0;
    while (i < bytes.size()) {
        // The longest run from here that is UTF-8 goes as it is; a byte that starts none is shown
        // by its value.
        std::size_t end = std::min(bytes.size(), i + 4);
        while (end > i && !platform::IsWellFormedUtf8(bytes.substr(i, end - i))) {
            --end;
        }
        if (end > i) {
            out.append(bytes.substr(i, end - i));
            i = end;
            continue;
        }
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02X", static_cast<unsigned char>(bytes[i]));
        out += escaped;
        ++i;
    }
    return out;
}

}  // namespace dcf
