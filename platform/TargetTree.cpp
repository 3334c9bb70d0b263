// The part of TargetTree that does not depend on the system: the chain of open folders from the
// target down to the folder last reached.
#include "platform/TargetTree.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <vector>

#include "platform/TreeHandles.h"

namespace platform {
namespace {

// A single component: not empty, not "." or "..", no separator of any system, no NUL.
bool IsPlainName(std::u16string_view name) {
    return !name.empty() && name != u"." && name != u".." &&
           name.find_first_of(std::u16string_view(u"/\\\0", 3)) == std::u16string_view::npos;
}

// Temporary names only need to differ from each other; exclusive creation guards the rest.
std::u16string TempSuffix() {
    static std::atomic<std::uint64_t> counter{
        static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count())};
    std::uint64_t mixed = counter.fetch_add(0x9E3779B97F4A7C15ull);
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ull;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBull;
    std::u16string suffix;
    for (int digit = 0; digit < 8; ++digit, mixed >>= 4) {
        suffix.push_back(u"0123456789abcdef"[mixed & 0xF]);
    }
    return suffix + u".tmp";
}

// The parent folder and the last component of a relative path.
std::pair<std::u16string_view, std::u16string> SplitLast(std::u16string_view path) {
    const std::size_t separator = path.rfind(kPathSeparator);
    if (separator == std::u16string_view::npos) {
        return {std::u16string_view(), std::u16string(path)};
    }
    return {path.substr(0, separator), std::u16string(path.substr(separator + 1))};
}

}  // namespace

struct TargetTree::Chain {
    struct Level {
        std::size_t end = 0;  // where the level's component ends in `path`
        FileIdentity identity;
        tree::Handle handle = tree::kNoHandle;
    };

    ~Chain() { Truncate(0); }

    // Closes every level below `keep`.
    void Truncate(std::size_t keep) {
        while (levels.size() > keep) {
            if (levels.back().handle != tree::kNoHandle) {
                tree::CloseFolder(levels.back().handle);
            }
            levels.pop_back();
        }
        path.resize(levels.empty() ? 0 : levels.back().end);
        firstHeld = std::min(firstHeld, std::max<std::size_t>(levels.size(), 1));
    }

    // Levels of the open branch that `folder` shares with it; the target always counts.
    std::size_t SharedLevels(std::u16string_view folder) const {
        std::size_t same = 0;
        if (!path.empty() && folder.size() >= path.size() &&
            std::memcmp(path.data(), folder.data(), path.size() * sizeof(char16_t)) == 0) {
            same = path.size();  // the common case, at the speed of memcmp on a deep branch
        } else if (!path.empty()) {
            same = static_cast<std::size_t>(
                std::mismatch(path.begin(), path.end(), folder.begin(), folder.end()).first -
                path.begin());
        }
        std::size_t level = levels.size() - 1;
        while (level > 0 &&
               !(levels[level].end <= same && (levels[level].end == folder.size() ||
                                               folder[levels[level].end] == kPathSeparator))) {
            --level;
        }
        return level;
    }

    // Closes the levels below `keep`, one by one from the deepest. Where the level above the
    // deepest open one was closed to save handles, it is reopened through its child and must be
    // the folder it was; false when it is not (the tree changed under us).
    bool ClimbTo(std::size_t keep) {
        while (levels.size() - 1 > keep) {
            const std::size_t last = levels.size() - 1;
            Level& above = levels[last - 1];
            if (last - 1 > 0 && above.handle == tree::kNoHandle) {
                tree::Handle parent = tree::kNoHandle;
                FileIdentity identity;
                if (tree::OpenParent(levels[last].handle, parent, identity) != kErrorSuccess) {
                    return false;
                }
                if (identity != above.identity) {
                    tree::CloseFolder(parent);
                    return false;
                }
                above.handle = parent;
                firstHeld = last - 1;
            }
            Truncate(last);
        }
        return true;
    }

    // Opens `name` below the deepest level and makes it the deepest.
    ErrorCode Descend(const std::u16string& name, std::size_t end) {
        if (!IsPlainName(name)) {
            return kErrorInvalidName;
        }
        tree::Handle folder = tree::kNoHandle;
        FileIdentity identity;
        if (const ErrorCode error =
                tree::OpenFolder(levels.back().handle, name, false, folder, identity);
            error != kErrorSuccess) {
            return error;
        }
        levels.push_back({end, identity, folder});
        if (levels.size() - firstHeld > tree::kHeldFolders) {
            tree::CloseFolder(levels[firstHeld].handle);
            levels[firstHeld].handle = tree::kNoHandle;
            ++firstHeld;
        }
        return kErrorSuccess;
    }

    ErrorCode openError = kErrorInvalidHandle;  // until Open succeeds
    std::u16string path;                        // the folder last reached
    std::vector<Level> levels;                  // [0] is the target itself
    std::size_t firstHeld = 1;                  // levels from here down are open, and the target
};

TargetTree::TargetTree() : chain_(std::make_unique<Chain>()) {}

TargetTree::~TargetTree() = default;

ErrorCode TargetTree::Open(const std::u16string& root) {
    chain_->Truncate(0);
    Chain::Level target;
    const std::u16string path = root.empty() ? std::u16string(1, kPathSeparator) : root;
    chain_->openError = tree::OpenRoot(path, target.handle, target.identity);
    if (chain_->openError == kErrorSuccess) {
        chain_->levels.push_back(target);
    }
    return chain_->openError;
}

ErrorCode TargetTree::Reach(std::u16string_view folder, std::intptr_t& handle) {
    Chain& chain = *chain_;
    if (chain.levels.empty()) {
        return chain.openError;
    }
    if (!chain.ClimbTo(chain.SharedLevels(folder))) {
        chain.Truncate(1);  // the branch moved: walk down from the target again
    }
    std::size_t position = chain.levels.back().end;
    while (position < folder.size()) {
        if (position > 0) {
            ++position;  // the separator behind the deepest level
        }
        const std::size_t end = std::min(folder.find(kPathSeparator, position), folder.size());
        if (const ErrorCode error =
                chain.Descend(std::u16string(folder.substr(position, end - position)), end);
            error != kErrorSuccess) {
            return error;
        }
        chain.path.assign(folder.substr(0, end));
        position = end;
    }
    handle = chain.levels.back().handle;
    return kErrorSuccess;
}

ErrorCode TargetTree::MakeFolder(std::u16string_view folder) {
    const auto [parent, name] = SplitLast(folder);
    tree::Handle handle = tree::kNoHandle;
    if (!IsPlainName(name)) {
        return kErrorInvalidName;
    }
    if (const ErrorCode error = Reach(parent, handle); error != kErrorSuccess) {
        return error;
    }
    return tree::MakeFolder(handle, name);
}

ErrorCode TargetTree::Look(std::u16string_view folder, const std::u16string& name, EntryKind& kind,
                           FileIdentity& identity) {
    kind = EntryKind::Missing;
    tree::Handle handle = tree::kNoHandle;
    if (!IsPlainName(name)) {
        return kErrorInvalidName;
    }
    if (const ErrorCode error = Reach(folder, handle); error != kErrorSuccess) {
        return error;
    }
    return tree::Look(handle, name, kind, identity);
}

ErrorCode TargetTree::CreateTempFile(std::u16string_view folder, std::u16string_view prefix,
                                     File& file, std::u16string& name) {
    tree::Handle handle = tree::kNoHandle;
    if (const ErrorCode error = Reach(folder, handle); error != kErrorSuccess) {
        return error;
    }
    ErrorCode error = kErrorFileExists;
    for (int attempt = 0; attempt < 100 && error == kErrorFileExists; ++attempt) {
        name = std::u16string(prefix) + TempSuffix();
        tree::Handle created = tree::kNoHandle;
        error = tree::CreateNewFile(handle, name, created);
        if (error == kErrorSuccess) {
            file.Close();
            file.handle_ = created;
        }
    }
    return error;
}

ErrorCode TargetTree::Rename(std::u16string_view folder, const std::u16string& from,
                             const std::u16string& to) {
    tree::Handle handle = tree::kNoHandle;
    if (!IsPlainName(from) || !IsPlainName(to)) {
        return kErrorInvalidName;
    }
    if (const ErrorCode error = Reach(folder, handle); error != kErrorSuccess) {
        return error;
    }
    return tree::Rename(handle, from, to);
}

ErrorCode TargetTree::RemoveFile(std::u16string_view folder, const std::u16string& name) {
    tree::Handle handle = tree::kNoHandle;
    if (!IsPlainName(name)) {
        return kErrorInvalidName;
    }
    if (const ErrorCode error = Reach(folder, handle); error != kErrorSuccess) {
        return error;
    }
    return tree::RemoveFile(handle, name);
}

}  // namespace platform
