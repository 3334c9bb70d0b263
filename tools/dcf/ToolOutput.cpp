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

std::string Counted(std::uint64_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::u16string PathFromArgument(const std::string& argument) {
    return platform::Utf8ToUtf16(argument);
}

}  // namespace dcf
