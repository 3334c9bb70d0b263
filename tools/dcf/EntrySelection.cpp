#include "tools/dcf/EntrySelection.h"

#include "platform/Text.h"

namespace dcftool {

namespace {

// Whether `c` is in the set between the brackets of "[...]".
bool InSet(std::u16string_view set, char16_t c) {
    const bool negated = !set.empty() && (set.front() == u'!' || set.front() == u'^');
    if (negated) {
        set.remove_prefix(1);
    }
    bool found = false;
    for (std::size_t i = 0; i < set.size(); ++i) {
        if (i + 2 < set.size() && set[i + 1] == u'-') {
            found = found || (set[i] <= c && c <= set[i + 2]);
            i += 2;
        } else {
            found = found || set[i] == c;
        }
    }
    return found != negated;
}

// Whether the pattern element at `p` (not a '*') matches `c`; `p` moves behind it.
bool ElementMatches(std::u16string_view pattern, std::size_t& p, char16_t c) {
    const char16_t element = pattern[p++];
    if (element == u'?') {
        return true;
    }
    if (element == u'\\' && p < pattern.size()) {
        return pattern[p++] == c;
    }
    if (element == u'[') {
        // A ']' right behind the opening bracket (or its '!') belongs to the set.
        std::size_t close = p + (p < pattern.size() && pattern[p] == u'!' ? 1 : 0) + 1;
        close = pattern.find(u']', close);
        if (close != std::u16string_view::npos) {
            const std::u16string_view set = pattern.substr(p, close - p);
            p = close + 1;
            return InSet(set, c);
        }
    }
    return element == c;
}

std::u16string DisplayForm(std::u16string_view storedName) {
    std::u16string name(storedName.substr(storedName.starts_with(u'\\') ? 1 : 0));
    for (char16_t& c : name) {
        c = c == u'\\' ? u'/' : c;
    }
    return name;
}

}  // namespace

bool GlobMatches(std::u16string_view pattern, std::u16string_view name) {
    std::size_t p = 0;
    std::size_t n = 0;
    // Where the last '*' stands and how much of the name it takes so far, to retry with more.
    std::size_t starP = std::u16string_view::npos;
    std::size_t starN = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            starP = ++p;
            starN = n;
            continue;
        }
        std::size_t next = p;
        if (p < pattern.size() && ElementMatches(pattern, next, name[n])) {
            p = next;
            ++n;
        } else if (starP != std::u16string_view::npos) {
            p = starP;
            n = ++starN;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == u'*') {
        ++p;
    }
    return p == pattern.size();
}

bool IsExcluded(const std::vector<std::u16string>& patterns, std::u16string_view name) {
    const std::u16string_view last = name.substr(name.find_last_of(u'/') + 1);
    for (const std::u16string& pattern : patterns) {
        if (GlobMatches(pattern, name) || GlobMatches(pattern, last)) {
            return true;
        }
    }
    return false;
}

EntrySelection::EntrySelection(const std::vector<std::string>& patterns, unsigned strip)
    : matched_(patterns.size(), false), strip_(strip) {
    for (const std::string& pattern : patterns) {
        std::u16string wide = platform::Utf8ToUtf16(pattern);
        while (wide.size() > 1 && wide.back() == u'/') {
            wide.pop_back();  // "reports/" names the folder
        }
        patterns_.push_back(std::move(wide));
    }
}

bool EntrySelection::Selects(std::u16string_view name) {
    if (patterns_.empty()) {
        return true;
    }
    bool selected = false;
    for (std::size_t i = 0; i < patterns_.size(); ++i) {
        // The name itself, or a folder above it: "reports" selects reports/2021/a.txt.
        for (std::size_t end = name.find(u'/');; end = name.find(u'/', end + 1)) {
            if (GlobMatches(patterns_[i], name.substr(0, end))) {
                matched_[i] = true;
                selected = true;
                break;
            }
            if (end == std::u16string_view::npos) {
                break;
            }
        }
    }
    return selected;
}

bool EntrySelection::Choose(std::u16string& storedName) {
    if (!Selects(DisplayForm(storedName))) {
        return false;
    }
    std::size_t start = 0;
    for (unsigned i = 0; i < strip_; ++i) {
        start = storedName.find(u'\\', start + 1);
        if (start == std::u16string::npos) {
            return false;  // nothing is left of the name
        }
    }
    storedName.erase(0, start);
    return true;
}

std::vector<std::string> EntrySelection::Unmatched() const {
    std::vector<std::string> unmatched;
    for (std::size_t i = 0; i < patterns_.size(); ++i) {
        if (!matched_[i]) {
            unmatched.push_back(platform::Utf16ToUtf8(patterns_[i]));
        }
    }
    return unmatched;
}

}  // namespace dcftool
