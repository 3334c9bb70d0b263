#include "frontend/LocalizedStrings.h"

#include <array>
#include <string_view>

CLocalizedStrings LocalizedStrings;

namespace {

constexpr std::array<std::u16string_view, 7> kKeys = {
    u"IDS_ERROR",
    u"IDS_DECOMPRESSING_FILE",
    u"IDS_USE_PWD_OR_KEY",
    u"IDS_UNABLE_TO_LOAD_PRIVKEY",
    u"IDS_DECOMPRESS_FAILED",
    u"IDS_REPLACE_FILE",
    u"IDS_QUESTION",
};

struct LanguageTexts {
    std::u16string_view name;
    std::array<std::u16string_view, kKeys.size()> texts;  // in the order of kKeys
};

// clang-format off
constexpr LanguageTexts kLanguages[] = {
#include "frontend/LocalizedTexts.inc"
};
// clang-format on

struct DialogTemplate {
    std::u16string_view english;
    std::u16string_view native;
    std::uint16_t id;
};

constexpr DialogTemplate kDialogTemplates[] = {
    {u"Czech", u"\u010ce\u0161tina", 130},
    {u"French", u"Fran\u00e7ais", 133},
    {u"Spanish", u"Espa\u00f1ol", 134},
    {u"Vietnamese", u"Ti\u1ebfng Vi\u1ec7t", 135},
    {u"German", u"Deutsch", 136},
    {u"Portuguese", u"Portugu\u00eas", 137},
    {u"Russian", u"\u0420\u0443\u0441\u0441\u043a\u0438\u0439", 138},
};
constexpr std::uint16_t kDefaultDialog = 129;

constexpr std::u16string_view kFilenameMarker = u"%filename%";

}  // namespace

void CLocalizedStrings::BuildStringTable() {
    CCriticalSectionLock hold(lock_);
    for (const LanguageTexts& language : kLanguages) {
        const std::u16string name(language.name);
        AddLanguage(name);
        SelectLanguage(name);
        for (std::size_t i = 0; i < kKeys.size(); ++i) {
            SetLocalizedString(std::u16string(kKeys[i]), std::u16string(language.texts[i]), {});
        }
    }
}

bool CLocalizedStrings::AddLanguage(const std::u16string& name) {
    CCriticalSectionLock hold(lock_);
    for (const std::u16string& known : languages_) {
        if (known == name) {
            return false;
        }
    }
    languages_.push_back(name);
    tables_.emplace_back();
    return true;
}

bool CLocalizedStrings::SelectLanguage(const std::u16string& name) {
    CCriticalSectionLock hold(lock_);
    for (std::size_t i = 0; i < languages_.size(); ++i) {
        if (languages_[i] == name) {
            currentLanguage_ = i;
            return true;
        }
    }
    currentLanguage_ = 0;
    return false;
}

std::u16string CLocalizedStrings::GetCurrentLanguage() {
    CCriticalSectionLock hold(lock_);
    return currentLanguage_ < languages_.size() ? languages_[currentLanguage_] : std::u16string();
}

void CLocalizedStrings::SetLocalizedString(const std::u16string& key, const std::u16string& text,
                                           const std::u16string& language) {
    CCriticalSectionLock hold(lock_);
    std::size_t index = currentLanguage_;
    if (!language.empty()) {
        index = languages_.size();
        for (std::size_t i = 0; i < languages_.size(); ++i) {
            if (languages_[i] == language) {
                index = i;
                break;
            }
        }
    }
    if (index >= tables_.size()) {
        return;  // no such language
    }
    std::u16string value = text;
    if (value.empty()) {
        // An empty text takes the first language's, which gains an empty entry if it has none.
        value = tables_[0].try_emplace(key).first->second;
    }
    tables_[index].try_emplace(key, std::move(value));
}

std::u16string CLocalizedStrings::GetLocalizedString(const std::u16string& key) {
    CCriticalSectionLock hold(lock_);
    if (currentLanguage_ < tables_.size()) {
        if (const auto found = tables_[currentLanguage_].find(key);
            found != tables_[currentLanguage_].end()) {
            return found->second;
        }
    }
    if (!tables_.empty()) {
        if (const auto found = tables_[0].find(key); found != tables_[0].end()) {
            return found->second;
        }
    }
    return kStringLoadFailure;
}

std::uint16_t CLocalizedStrings::ResolveDialogId() {
    const std::u16string language = GetCurrentLanguage();
    for (const DialogTemplate& dialog : kDialogTemplates) {
        if (language == dialog.english || language == dialog.native) {
            return dialog.id;
        }
    }
    return kDefaultDialog;
}

int ReplaceFilenameMarker(std::u16string& text, const std::u16string* value) {
    const std::u16string_view replacement = value != nullptr ? *value : std::u16string_view();
    int count = 0;
    std::size_t at = text.find(kFilenameMarker);
    while (at != std::u16string::npos) {
        text.replace(at, kFilenameMarker.size(), replacement);
        ++count;
        at = text.find(kFilenameMarker, at + replacement.size());
    }
    return count;
}
