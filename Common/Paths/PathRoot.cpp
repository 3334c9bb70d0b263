#include "Common/Paths/PathRoot.h"

namespace Zelmarik {
namespace {

constexpr char16_t kBackslash = u'\\';

std::u16string DriveRoot(char16_t drive) {
    return {drive, u':', kBackslash};
}

bool EndsWith(std::u16string_view text, std::u16string_view tail) {
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

}  // namespace

bool GetPathRoot(std::u16string_view path, std::u16string& root) {
    if (path.empty()) {
        return false;
    }
    if (path.size() >= 6 && path.substr(0, 4) == u"\\\\?\\" && path[5] == u':') {
        root = DriveRoot(path[4]);
        return true;
    }
    if (path.size() >= 2 && path[1] == u':') {
        root = DriveRoot(path[0]);
        return true;
    }
    if (path.size() < 4 || path.substr(0, 2) != u"\\\\") {
        return false;
    }
    // \\server\share\ ends at the fourth backslash.
    std::size_t backslashes = 0;
    std::size_t end = 0;
    while (end < path.size() && backslashes < 4) {
        if (path[end++] == kBackslash) {
            ++backslashes;
        }
    }
    if (backslashes < 3) {
        return false;
    }
    root.assign(path.substr(0, end));
    if (backslashes == 3) {
        root += kBackslash;
    }
    return true;
}

std::pair<std::u16string, std::u16string> SplitRootPath(std::u16string_view path) {
    constexpr std::u16string_view kShortcuts =
        u"\\Roaming\\Microsoft\\Windows\\Network Shortcuts\\";
    std::u16string root;
    std::u16string rest;
    const std::size_t marker = path.find(kShortcuts);
    if (marker == std::u16string_view::npos) {
        GetPathRoot(path, root);
        if (path.size() > root.size()) {
            rest.assign(path.substr(root.size()));
        }
    } else {
        // The shortcut folder is the root: up to the backslash behind its name.
        const std::size_t folderEnd = path.find(kBackslash, marker + kShortcuts.size());
        root.assign(
            path.substr(0, folderEnd == std::u16string_view::npos ? path.size() : folderEnd + 1));
        if (!EndsWith(path, u"\\target.lnk")) {
            rest.assign(path.substr(root.size()));
        }
    }
    if (!root.empty() && root.back() != kBackslash) {
        root += kBackslash;
    }
    if (!rest.empty() && path.back() == kBackslash) {
        rest += kBackslash;
    }
    return {std::move(root), std::move(rest)};
}

}  // namespace Zelmarik
