#include "archive/detail/FreshNames.h"

#include <algorithm>

namespace {

bool IsPlainUnit(char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
           (unit >= u'0' && unit <= u'9') || unit == u'.' || unit == u'_' || unit == u'-' ||
           unit == u' ';
}

// An archive name whose components hold plain units only, none ending in a dot or a blank.
bool IsPlainName(std::u16string_view name) {
    for (std::size_t at = 0; at < name.size(); ++at) {
        const char16_t unit = name[at];
        if (unit == u'\\') {
            continue;
        }
        const bool endsComponent = at + 1 == name.size() || name[at + 1] == u'\\';
        if (!IsPlainUnit(unit) || (endsComponent && (unit == u'.' || unit == u' '))) {
            return false;
        }
    }
    return true;
}

std::u16string Folded(std::u16string_view name) {
    std::u16string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(), [](char16_t unit) {
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
    });
    return folded;
}

}  // namespace

FreshNames::FreshNames(const std::vector<std::u16string>& folders,
                       const std::vector<std::u16string>& files) {
    std::unordered_set<std::u16string> seen;
    seen.reserve(folders.size() + files.size());
    for (const auto* list : {&folders, &files}) {
        for (const std::u16string& name : *list) {
            std::u16string folded = Folded(name);
            if (!name.empty() && seen.count(folded) != 0) {
                shared_.insert(std::move(folded));
            } else {
                seen.insert(std::move(folded));
            }
        }
    }
}

void FreshNames::FolderMade(std::u16string folder) {
    madeFolders_.insert(std::move(folder));
}

bool FreshNames::NeedNoLook(std::u16string_view name, const RelativeName& where) const {
    return madeFolders_.count(where.folder) != 0 && IsPlainName(name) &&
           shared_.count(Folded(name)) == 0;
}
