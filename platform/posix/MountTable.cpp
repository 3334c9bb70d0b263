#include "platform/posix/MountTable.h"

#include <climits>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace platform::posix {
namespace {

// Fields of the table escape a space, a tab, a newline and a backslash as three octal digits.
std::string Unescape(const std::string& field) {
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        const bool octal = field[i] == '\\' && i + 3 < field.size();
        if (octal && field[i + 1] >= '0' && field[i + 1] <= '3' && field[i + 2] >= '0' &&
            field[i + 2] <= '7' && field[i + 3] >= '0' && field[i + 3] <= '7') {
            text.push_back(static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                             (field[i + 3] - '0')));
            i += 3;
        } else {
            text.push_back(field[i]);
        }
    }
    return text;
}

// "36 35 98:0 /root /mount/point options [optional fields] - type source super-options"
bool ParseLine(const std::string& line, MountEntry& entry) {
    std::istringstream fields(line);
    std::string id, parent, device, root, mountPoint, options, field;
    if (!(fields >> id >> parent >> device >> root >> mountPoint >> options)) {
        return false;
    }
    while (fields >> field && field != "-") {
    }
    std::string type, source;
    if (field != "-" || !(fields >> type >> source)) {
        return false;
    }
    const std::size_t colon = device.find(':');
    if (colon == std::string::npos) {
        return false;
    }
    entry.MountPoint = Unescape(mountPoint);
    entry.FileSystem = Unescape(type);
    entry.Source = Unescape(source);
    entry.Major = static_cast<unsigned>(std::strtoul(device.c_str(), nullptr, 10));
    entry.Minor = static_cast<unsigned>(std::strtoul(device.c_str() + colon + 1, nullptr, 10));
    return true;
}

bool UnderMountPoint(const std::string& path, const std::string& mountPoint) {
    if (mountPoint == "/") {
        return !path.empty() && path[0] == '/';
    }
    return path.compare(0, mountPoint.size(), mountPoint) == 0 &&
           (path.size() == mountPoint.size() || path[mountPoint.size()] == '/');
}

}  // namespace

bool ReadMountTable(std::vector<MountEntry>& entries) {
    std::ifstream table("/proc/self/mountinfo");
    if (!table) {
        return false;
    }
    std::string line;
    while (std::getline(table, line)) {
        MountEntry entry;
        if (ParseLine(line, entry)) {
            entries.push_back(std::move(entry));
        }
    }
    return true;
}

bool ResolvePath(const std::string& path, std::string& resolved) {
    if (path.empty()) {
        return false;
    }
    std::string existing = path;
    while (existing.size() > 1 && existing.back() == '/') {
        existing.pop_back();
    }
    std::string missing;
    for (;;) {
        char buffer[PATH_MAX];
        if (::realpath(existing.c_str(), buffer) != nullptr) {
            resolved = buffer;
            if (!missing.empty()) {
                resolved += (resolved.back() == '/' ? "" : "/") + missing;
            }
            return true;
        }
        if (existing == "." || existing == "/") {
            return false;
        }
        const std::size_t slash = existing.rfind('/');
        if (slash == std::string::npos) {
            // A relative name of one component: it lies in the current folder.
            if (existing == "..") {
                return false;
            }
            missing = missing.empty() ? existing : existing + "/" + missing;
            existing = ".";
            continue;
        }
        const std::string last = existing.substr(slash + 1);
        if (last == "..") {
            // Where a missing folder's parent lies cannot be told without the folder.
            return false;
        }
        if (!last.empty() && last != ".") {
            missing = missing.empty() ? last : last + "/" + missing;
        }
        existing = slash == 0 ? "/" : existing.substr(0, slash);
    }
}

const MountEntry* MountOf(const std::vector<MountEntry>& entries, const std::string& resolved) {
    const MountEntry* best = nullptr;
    for (const MountEntry& entry : entries) {
        if (UnderMountPoint(resolved, entry.MountPoint) &&
            (best == nullptr || entry.MountPoint.size() >= best->MountPoint.size())) {
            best = &entry;
        }
    }
    return best;
}

}  // namespace platform::posix
