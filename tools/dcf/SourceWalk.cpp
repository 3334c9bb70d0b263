#include "tools/dcf/SourceWalk.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

#include "archive/ArchiveNames.h"
#include "platform/File.h"
#include "platform/Text.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/ToolOutput.h"

namespace dcf {

namespace {

namespace fs = std::filesystem;

// An absolute path without "." and ".." and without a final separator.
fs::path Settled(const std::string& argument) {
    fs::path path = fs::absolute(fs::path(PathFromArgument(argument))).lexically_normal();
    if (!path.has_filename() && path.has_parent_path() && path != path.root_path()) {
        path = path.parent_path();
    }
    return path;
}

class Walker {
public:
    Walker(const std::string& command, bool quiet, SourceListing& listing)
        : command_(command), quiet_(quiet), listing_(listing) {}

    void Add(const fs::path& path) {
        const std::u16string name = path.filename().u16string();
        if (name.find(u'\\') != std::u16string::npos) {
            Note(path, "a backslash separates names in an archive, left out");
            return;
        }
        if (!IsPortableArchiveName(u'\\' + name)) {
            Note(path,
                 "a name that Windows can't extract (a ':', a device name such as CON, or a "
                 "final dot or blank), left out");
            return;
        }
        std::error_code error;
        const fs::file_status link = fs::symlink_status(path, error);
        if (error) {
            FailWith(command_, Display(path) + ": " + error.message(), kExitIo);
        }
        if (fs::is_symlink(link) && fs::is_directory(fs::status(path, error))) {
            Note(path, "a link to a folder, not followed");
            return;
        }
        const fs::file_status status = fs::status(path, error);
        if (fs::is_directory(status)) {
            AddFolder(path);
        } else if (fs::is_regular_file(status)) {
            AddFile(path);
        } else {
            Note(path, "neither a file nor a folder, left out");
        }
    }

private:
    void AddFolder(const fs::path& path) {
        ArchiveWriteItem item;
        item.path = path.u16string();
        item.isFolder = true;
        listing_.items.push_back(std::move(item));
        ++listing_.folders;
        std::vector<fs::path> children;
        std::error_code error;
        for (fs::directory_iterator it(path, error), end; !error && it != end;
             it.increment(error)) {
            children.push_back(it->path());
        }
        if (error) {
            FailWith(command_, Display(path) + ": " + error.message(), kExitIo);
        }
        std::sort(children.begin(), children.end());
        for (const fs::path& child : children) {
            Add(child);
        }
    }

    void AddFile(const fs::path& path) {
        ArchiveWriteItem item;
        item.path = path.u16string();
        platform::File probe;
        const platform::ErrorCode error = probe.Open(item.path, platform::OpenMode::Read);
        if (error != platform::kErrorSuccess || probe.Size(item.size) != platform::kErrorSuccess) {
            Note(path, DescribeError(error) + "; stored as an empty file");
            item.size = 0;
        }
        listing_.totalSize += item.size;
        listing_.items.push_back(std::move(item));
        ++listing_.files;
    }

    void Note(const fs::path& path, const std::string& what) const {
        if (!quiet_) {
            std::cerr << "dcf " << command_ << ": " << Display(path) << ": " << what << '\n';
        }
    }
    static std::string Display(const fs::path& path) {
        return platform::Utf16ToUtf8(path.u16string());
    }

    const std::string& command_;
    bool quiet_;
    SourceListing& listing_;
};

}  // namespace

SourceListing ListSources(const std::string& command, const std::vector<std::string>& paths,
                          bool quiet) {
    SourceListing listing;
    std::vector<fs::path> settled;
    for (const std::string& argument : paths) {
        settled.push_back(Settled(argument));
        if (!settled.back().has_filename() || !settled.back().has_parent_path()) {
            FailWith(command, argument + ": the root of a file system can't be archived by name",
                     kExitUsage);
        }
        if (settled.back().parent_path() != settled.front().parent_path()) {
            FailWith(command,
                     argument + ": all paths must lie in one folder, the root of the names",
                     kExitUsage);
        }
        std::error_code error;
        if (!fs::exists(fs::symlink_status(settled.back(), error))) {
            FailWith(command, argument + ": no such file or folder", kExitIo);
        }
    }
    listing.rootPath = settled.front().u16string();
    Walker walker(command, quiet, listing);
    for (auto it = settled.begin(); it != settled.end(); ++it) {
        if (std::find(settled.begin(), it, *it) == it) {  // a path given twice is listed once
            walker.Add(*it);
        }
    }
    return listing;
}

std::string NameUnderRoot(const SourceListing& listing, const std::u16string& path) {
    const std::size_t start = listing.rootPath.find_last_of(platform::kPathSeparator) + 1;
    return platform::Utf16ToUtf8(std::u16string_view(path).substr(start));
}

}  // namespace dcf
