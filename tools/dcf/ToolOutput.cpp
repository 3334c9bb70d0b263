#include "tools/dcf/ToolOutput.h"

#include <CLI/CLI.hpp>

#include <iostream>

#include "platform/ErrorText.h"
#include "platform/Text.h"

namespace dcf {

void Fail(const std::string& command, const std::string& message) {
    std::cerr << "dcf " << command << ": " << message << '\n';
    throw CLI::RuntimeError(kExitFailure);
}

std::string DescribeError(platform::ErrorCode error) {
    std::string text = platform::Utf16ToUtf8(platform::SystemErrorText(error));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) {
        text.pop_back();
    }
    const std::string number = "error " + std::to_string(error);
    return text.empty() ? number : text + " (" + number + ")";
}

std::string Printable(std::string_view utf8) {
    static constexpr std::string_view kNamed = "\a\b\t\n\v\f\r";
    static constexpr std::string_view kLetters = "abtnvfr";
    std::string out;
    out.reserve(utf8.size());
    const auto octal = [&out](unsigned char byte) {
        out += '\\';
        for (const int shift : {6, 3, 0}) {
            out += static_cast<char>('0' + ((byte >> shift) & 7));
        }
    };
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        const auto next = i + 1 < utf8.size() ? static_cast<unsigned char>(utf8[i + 1]) : 0;
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
        } else {
            out += static_cast<char>(byte);
        }
    }
    return out;
}

std::string Counted(std::uint64_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::u16string PathFromArgument(const std::string& argument) {
    return platform::Utf8ToUtf16(argument);
}

}  // namespace dcf
