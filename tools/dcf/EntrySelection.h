#pragma once
// Which entries of an archive a command works on: names and glob patterns as tar takes them,
// and the leading folders that extraction strips.

#include <string>
#include <string_view>
#include <vector>

namespace dcftool {

// Shell-style matching of a whole name: '*' any run of characters, '?' one character, "[a-z]"
// and "[!a]" one of a set or not, '\' the next character as it is. '*' and '?' match '/' too,
// as in tar's member names.
bool GlobMatches(std::u16string_view pattern, std::u16string_view name);

// Whether one of the --exclude patterns of create matches a name under the archive's root
// ("reports/2021/a.txt"), as a whole or by its last component ("*.tmp").
bool IsExcluded(const std::vector<std::u16string>& patterns, std::u16string_view name);

class EntrySelection {
public:
    // `patterns` select by the name of an entry ("reports/2021/a.txt") or of a folder above it;
    // none select everything. `strip` leading folders go from each name when it is extracted.
    EntrySelection(const std::vector<std::string>& patterns, unsigned strip);

    // Whether the entry of this name (in display form) is selected.
    bool Selects(std::u16string_view name);
    // For extraction: false when the entry of this stored name ("\reports\a.txt") is left out,
    // else the name it is extracted under, with the leading folders stripped.
    bool Choose(std::u16string& storedName);
    // The patterns that selected nothing so far.
    std::vector<std::string> Unmatched() const;

private:
    std::vector<std::u16string> patterns_;
    std::vector<bool> matched_;
    unsigned strip_;
};

}  // namespace dcftool
