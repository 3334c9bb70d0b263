#include <dirent.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "platform/Terminal.h"

namespace platform {
namespace {

std::string HomeFolder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    const passwd* user = ::getpwuid(::getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

}  // namespace

std::string ExpandHomeFolder(std::string_view path) {
    if (path != "~" && !path.starts_with("~/")) {
        return std::string(path);
    }
    const std::string home = HomeFolder();
    return home.empty() ? std::string(path) : home + std::string(path.substr(1));
}

std::vector<std::string> PathCompletions(std::string_view typed) {
    const std::string path = ExpandHomeFolder(typed);
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    const std::string start = slash == std::string::npos ? path : path.substr(slash + 1);
    std::vector<std::string> names;
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(
        ::opendir(folder.empty() ? "." : folder.c_str()), ::closedir);
    if (!listing) {
        return names;
    }
    while (const dirent* entry = ::readdir(listing.get())) {
        const std::string_view name = entry->d_name;
        if (name == "." || name == ".." || !name.starts_with(start) ||
            (name.front() == '.' && !start.starts_with('.'))) {
            continue;
        }
        struct stat info {};
        const bool isFolder =
            ::stat((folder + std::string(name)).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
        names.push_back(std::string(name) + (isFolder ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace platform
