#include "tools/dcf/ReplaceQuestion.h"

#include <cctype>
#include <iostream>

#include "platform/Terminal.h"
#include "platform/Text.h"
#include "tools/dcf/ToolOutput.h"

namespace {

unsigned char Lower(char letter) {
    return static_cast<unsigned char>(std::tolower(static_cast<unsigned char>(letter)));
}

}  // namespace

const ReplaceChoice* AskReplaceOnTerminal(const std::u16string& path,
                                          std::span<const ReplaceChoice> choices) {
    std::string prompt = dcf::Printable(platform::Utf16ToUtf8(path)) + " exists. Replace it? ";
    for (const ReplaceChoice& choice : choices) {
        prompt += (&choice == choices.data() ? "[" : ", [") + std::string(1, choice.label[0]) +
                  "]" + std::string(choice.label.substr(1));
    }
    prompt += ": ";
    for (;;) {
        std::cerr << prompt << std::flush;
        std::string answer;
        if (!platform::ReadTerminalLine(answer, true)) {
            return nullptr;
        }
        for (const ReplaceChoice& choice : choices) {
            if (!answer.empty() && Lower(answer.front()) == Lower(choice.label[0])) {
                return &choice;
            }
        }
    }
}
