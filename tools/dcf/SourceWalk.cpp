#include "tools/dcf/SourceWalk.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "archive/Archive.h"
#include "platform/File.h"
#include "platform/TargetTree.h"
#include "platform/Text.h"
#include "tools/dcf/EntrySelection.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

namespace fs = std::filesystem;

constexpr char16_t kRoot = u'/';

// An absolute path without "." and ".." and without a final separator.
fs::path Settled(const std::string& argument) {
    fs::path path = fs::absolute(fs::path(PathFromArgument(argument))).lexically_normal();
    if (!path.has_filename() && path.has_parent_path() && path != path.root_path()) {
        path = path.parent_path();
    }
    return path;
}

std::string Display(const fs::path& path) {
    return Printable(path.native());
}

class Walker {
public:
    Walker(const std::string& command, const WalkOptions& options, SourceListing& listing)
        : command_(command), options_(options), listing_(listing) {
        // Known once, so that each file is told from the archive by what its open handle says.
        platform::File archive;
        platform::FileIdentity identity;
        if (!options_.archive.empty() &&
            archive.Open(options_.archive, platform::OpenMode::Read) == platform::kErrorSuccess &&
            platform::IdentityOf(archive, identity) == platform::kErrorSuccess) {
            archive_ = identity;
        }
    }

    // A path given to create, stored under its last name.
    void AddGiven(const fs::path& path) {
        if (CanStore(path)) {
            Add(path, platform::Utf8ToUtf16(path.filename().native()));
        }
    }

private:
    // `name`: the path's name in the archive, "reports/2021/a.txt".
    void Add(const fs::path& path, const std::u16string& name) {
        std::error_code error;
        const fs::file_status link = fs::symlink_status(path, error);
        // Only a link needs a second look, at what it leads to.
        const fs::file_status status = fs::is_symlink(link) ? fs::status(path, error) : link;
        // A file is opened here, before anything is said of it: its handle tells the archive.
        platform::File file;
        platform::ErrorCode opened = platform::kErrorSuccess;
        if (fs::is_regular_file(status)) {
            opened = file.Open(platform::Utf8ToUtf16(path.native()), platform::OpenMode::Read);
            platform::FileIdentity identity;
            if (opened == platform::kErrorSuccess && archive_ &&
                platform::IdentityOf(file, identity) == platform::kErrorSuccess &&
                identity == *archive_) {
                return LeaveOut(path, "the archive being written");
            }
        }
        if (IsExcluded(options_.excluded, name)) {
            return LeaveOut(path, "matched by --exclude");
        }
        if (fs::is_symlink(link)) {
            if (fs::is_directory(status)) {
                return LeaveOut(path, "a link to a folder, not followed");
            }
            if (fs::is_regular_file(status)) {
                Note(command_, Display(path) + ": a link: the file it points to is stored");
            }
        }
        if (fs::is_directory(status)) {
            AddFolder(path, name);
        } else if (fs::is_regular_file(status)) {
            AddFile(path, name, file, opened);
        } else {
            LeaveOut(path, fs::is_symlink(link) ? "a link that points nowhere"
                                                : "neither a file nor a folder");
        }
    }

    // Whether a name that the folder holds can be stored; a note for one that can't.
    bool CanStore(const fs::path& path) {
        const std::string bytes = path.filename().native();
        if (!platform::IsWellFormedUtf8(bytes)) {
            LeaveOut(path, "a name that is not UTF-8 (the archive holds UTF-16 names)");
            return false;
        }
        const std::u16string name = platform::Utf8ToUtf16(bytes);
        if (name.find(u'\\') != std::u16string::npos) {
            LeaveOut(path, "a backslash separates names in an archive");
            return false;
        }
        if (!IsPortableArchiveName(u'\\' + name)) {
            LeaveOut(path,
                     "a name that Windows can't extract (a ':', a device name such as CON, or a "
                     "final dot or blank)");
            return false;
        }
        return true;
    }

    void AddFolder(const fs::path& path, const std::u16string& name) {
        std::vector<fs::path> children;
        std::error_code error;
        for (fs::directory_iterator it(path, error), end; !error && it != end;
             it.increment(error)) {
            children.push_back(it->path());
        }
        if (error) {
            return LeaveOut(path, error.message() + ", with all it holds");
        }
        ArchiveWriteItem item;
        item.path = kRoot + name;
        item.isFolder = true;
        listing_.items.push_back(std::move(item));
        ++listing_.folders;
        std::sort(children.begin(), children.end());
        for (const fs::path& child : children) {
            if (CanStore(child)) {
                Add(child, name + u'/' + platform::Utf8ToUtf16(child.filename().native()));
            }
        }
    }

    // `file` is the path opened for reading, or `error` why it could not be.
    void AddFile(const fs::path& path, const std::u16string& name, const platform::File& file,
                 platform::ErrorCode error) {
        ArchiveWriteItem item;
        item.path = kRoot + name;
        const std::u16string real = platform::Utf8ToUtf16(path.native());
        if (error == platform::kErrorSuccess) {
            error = file.Size(item.size);
        }
        if (error != platform::kErrorSuccess) {
            return LeaveOut(path, DescribeError(error));
        }
        listing_.realPaths[item.path] = real;
        listing_.totalSize += item.size;
        listing_.items.push_back(std::move(item));
        ++listing_.files;
    }

    void LeaveOut(const fs::path& path, const std::string& why) {
        Note(command_, Display(path) + ": " + why + "; left out");
        ++listing_.leftOut;
    }

    const std::string& command_;
    const WalkOptions& options_;
    SourceListing& listing_;
    std::optional<platform::FileIdentity> archive_;
};

void OpenRealPath(std::u16string* path, void* context) {
    const auto& listing = *static_cast<const SourceListing*>(context);
    const auto real = listing.realPaths.find(*path);
    // A path that was not listed opens nothing, rather than what the made-up one names.
    *path = real != listing.realPaths.end() ? real->second : std::u16string();
}

}  // namespace

SourceListing ListSources(const std::string& command, const std::vector<std::string>& paths,
                          const WalkOptions& options) {
    SourceListing listing;
    listing.rootPath = std::u16string(1, kRoot);
    std::vector<fs::path> settled;
    std::map<std::u16string, std::string> named;  // the name of each path, and its argument
    for (const std::string& argument : paths) {
        const fs::path path = Settled(argument);
        if (!path.has_filename() || !path.has_parent_path()) {
            FailWith(command, argument + ": the root of a file system can't be archived by name",
                     kExitUsage);
        }
        std::error_code error;
        if (!fs::exists(fs::symlink_status(path, error))) {
            FailWith(command, argument + ": no such file or folder", kExitIo);
        }
        if (std::find(settled.begin(), settled.end(), path) != settled.end()) {
            continue;  // a path given twice is listed once
        }
        const std::u16string name = platform::Utf8ToUtf16(path.filename().native());
        if (const auto other = named.find(name); other != named.end()) {
            FailWith(command,
                     other->second + " and " + argument + " would both be stored as " +
                         platform::Utf16ToUtf8(name) + "; give them in separate archives",
                     kExitUsage);
        }
        named[name] = argument;
        settled.push_back(path);
    }
    Walker walker(command, options, listing);
    for (const fs::path& path : settled) {
        walker.AddGiven(path);
    }
    return listing;
}

std::string NameUnderRoot(const ArchiveWriteItem& item) {
    return platform::Utf16ToUtf8(std::u16string_view(item.path).substr(1));
}

void ReadRealPaths(const SourceListing& listing, DCCArchiveUserSettings& settings) {
    settings.onFileOpening = OpenRealPath;
    settings.callbackContexts[CALLBACK_FILE_OPENING] = const_cast<SourceListing*>(&listing);
}

}  // namespace dcftool
