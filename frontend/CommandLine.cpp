#include "frontend/CommandLine.h"

namespace {

constexpr char16_t kBlank = u' ';
constexpr char16_t kQuote = u'"';

std::u16string_view TrimBlanks(std::u16string_view text) {
    const std::size_t first = text.find_first_not_of(kBlank);
    if (first == std::u16string_view::npos) {
        return {};
    }
    const std::size_t last = text.find_last_not_of(kBlank);
    return text.substr(first, last - first + 1);
}

char16_t FoldAsciiLetter(char16_t c) {
    return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c;
}

bool EqualIgnoringAsciiCase(std::u16string_view a, std::u16string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (FoldAsciiLetter(a[i]) != FoldAsciiLetter(b[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace

void CCommandLine::Parse(const char16_t* commandLine) {
    tokens_.clear();
    if (commandLine == nullptr) {
        return;
    }
    std::u16string_view rest = TrimBlanks(commandLine);
    for (;;) {
        if (!rest.empty() && rest.front() == kQuote) {
            // An opening quote without a closing one takes the rest of the line as its token.
            const std::size_t close = rest.find(kQuote, 1);
            std::u16string_view token = rest.substr(1, close == rest.npos ? rest.npos : close - 1);
            while (!token.empty() && token.back() == kQuote) {
                token.remove_suffix(1);
            }
            tokens_.emplace_back(token);
            rest = close == rest.npos ? std::u16string_view() : rest.substr(close + 1);
        } else if (rest.empty()) {
            return;
        } else {
            const std::size_t blank = rest.find(kBlank);
            if (blank == rest.npos) {
                tokens_.emplace_back(rest);
                return;
            }
            tokens_.emplace_back(rest.substr(0, blank));
            rest = rest.substr(blank);
        }
        const std::size_t next = rest.find_first_not_of(kBlank);
        rest = next == rest.npos ? std::u16string_view() : rest.substr(next);
    }
}

void CCommandLine::Assign(std::vector<std::u16string> tokens) {
    tokens_ = std::move(tokens);
}

int CCommandLine::FindOption(std::u16string_view name) const {
    for (std::size_t i = 0; i < tokens_.size(); ++i) {
        if (EqualIgnoringAsciiCase(tokens_[i], name)) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

bool CCommandLine::GetOptionValue(std::u16string_view name, std::u16string& value) const {
    const int index = FindOption(name);
    if (index < 0 || static_cast<std::size_t>(index) + 1 >= tokens_.size()) {
        return false;
    }
    value = tokens_[static_cast<std::size_t>(index) + 1];
    return !value.empty();
}
