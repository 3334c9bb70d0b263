#pragma once
// Every word the interactive front end shows: seven keys in ten languages, filled by code at
// start, with a fallback to the first language and the "%filename%" substitution.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "frontend/CriticalSectionWrapper.h"

class CLocalizedStrings {
public:
    // Fills every language; the last one stays selected.
    void BuildStringTable();
    // False if the language is there already.
    bool AddLanguage(const std::u16string& name);
    // Exact comparison; an unknown name selects the first language and gives false.
    bool SelectLanguage(const std::u16string& name);
    std::u16string GetCurrentLanguage();
    // An empty `language` means the current one. The first text of a key stays.
    void SetLocalizedString(const std::u16string& key, const std::u16string& text,
                            const std::u16string& language);
    // The current language's text, else the first language's, else a fixed English text.
    std::u16string GetLocalizedString(const std::u16string& key);
    // The dialog template of the current language.
    std::uint16_t ResolveDialogId();

private:
    CCriticalSectionWrapper lock_;
    std::size_t currentLanguage_ = 0;
    std::vector<std::u16string> languages_;
    std::vector<std::map<std::u16string, std::u16string>> tables_;
};

extern CLocalizedStrings LocalizedStrings;

inline constexpr char16_t kStringLoadFailure[] = u"Unable to load the string! (system error)";

// Replaces each "%filename%" in `text` by `value` (null counts as empty), scanning on behind
// the inserted text; gives the number of replacements.
int ReplaceFilenameMarker(std::u16string& text, const std::u16string* value);
