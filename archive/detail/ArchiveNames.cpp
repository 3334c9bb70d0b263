#include "archive/detail/ArchiveNames.h"

#include <algorithm>
#include <array>

#include "archive/Archive.h"
#include "archive/detail/FileFormat.h"
#include "platform/File.h"

namespace {

constexpr char16_t kArchiveSeparator = u'\\';
// Where the platform separates paths with a backslash, its device names and trailing dots and
// blanks are interpreted by the file system.
constexpr bool kBackslashPlatform = platform::kPathSeparator == u'\\';

bool IsReservedDeviceName(std::u16string_view component) {
    static constexpr std::array<std::u16string_view, 4> kPlain = {u"con", u"prn", u"aux", u"nul"};
    static constexpr std::array<std::u16string_view, 2> kNumbered = {u"com", u"lpt"};
    // The device answers to its name with any extension, and blanks before the dot.
    std::u16string base = FoldCase(component.substr(0, component.find(u'.')));
    while (!base.empty() && base.back() == u' ') {
        base.pop_back();
    }
    if (std::find(kPlain.begin(), kPlain.end(), base) != kPlain.end()) {
        return true;
    }
    return base.size() == 4 && base[3] >= u'1' && base[3] <= u'9' &&
           std::find(kNumbered.begin(), kNumbered.end(), std::u16string_view(base).substr(0, 3)) !=
               kNumbered.end();
}

// `withBackslashRules`: also the rules of systems where the backslash separates paths.
bool IsSafeComponent(std::u16string_view component, bool withBackslashRules) {
    if (component.empty() || component == u"." || component == u"..") {
        return false;
    }
    if (component.find_first_of(std::u16string_view(u"\0:/", 3)) != std::u16string_view::npos) {
        return false;
    }
    return !withBackslashRules || (component.back() != u'.' && component.back() != u' ' &&
                                   !IsReservedDeviceName(component));
}

bool HasSafeComponents(std::u16string_view name, bool withBackslashRules) {
    if (name.empty() || name.front() != kArchiveSeparator) {
        return false;
    }
    std::u16string_view rest = name.substr(1);
    for (;;) {
        const std::size_t separator = rest.find(kArchiveSeparator);
        if (!IsSafeComponent(rest.substr(0, separator), withBackslashRules)) {
            return false;
        }
        if (separator == std::u16string_view::npos) {
            return true;
        }
        rest.remove_prefix(separator + 1);
    }
}

}  // namespace

std::u16string TargetRoot(const std::u16string& targetPath) {
    if (!targetPath.empty() && targetPath.back() == platform::kPathSeparator) {
        return targetPath.substr(0, targetPath.size() - 1);
    }
    return targetPath;
}

bool IsSafeArchiveName(std::u16string_view name) {
    return HasSafeComponents(name, kBackslashPlatform);
}

bool IsPortableArchiveName(std::u16string_view name) {
    return HasSafeComponents(name, true);
}

std::u16string JoinArchiveName(const std::u16string& root, std::u16string_view name) {
    std::u16string path = root;
    path.reserve(root.size() + name.size());
    for (const char16_t unit : name) {
        path.push_back(unit == kArchiveSeparator ? platform::kPathSeparator : unit);
    }
    return path;
}

std::u16string RelativeArchivePath(std::u16string_view name) {
    return JoinArchiveName(u"", name.substr(name.empty() ? 0 : 1));
}

RelativeName SplitArchiveName(std::u16string_view name) {
    std::u16string path = RelativeArchivePath(name);
    const std::size_t separator = path.rfind(platform::kPathSeparator);
    if (separator == std::u16string::npos) {
        return {std::u16string(), std::move(path)};
    }
    return {path.substr(0, separator), path.substr(separator + 1)};
}
