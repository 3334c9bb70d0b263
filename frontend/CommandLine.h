#pragma once
// The stub's command line as a list of tokens. Options are compared whole, with the letters
// A to Z in either case.

#include <string>
#include <string_view>
#include <vector>

class CCommandLine {
public:
    // Discards the tokens held and splits `commandLine`; null leaves the list empty.
    // Blanks (0x20 only) separate tokens; a token that begins with a double quote runs to the
    // next double quote. No character escapes a quote.
    void Parse(const char16_t* commandLine);
    // Takes tokens that are already split, as a POSIX program receives them.
    void Assign(std::vector<std::u16string> tokens);

    // Index of the first token equal to `name`, or -1.
    int FindOption(std::u16string_view name) const;
    // False when the option is absent or is the last token; else copies the next token,
    // whatever it looks like, into `value` and returns true only if that token is not empty.
    bool GetOptionValue(std::u16string_view name, std::u16string& value) const;

    const std::vector<std::u16string>& Tokens() const { return tokens_; }

private:
    std::vector<std::u16string> tokens_;
};
