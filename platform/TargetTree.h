#pragma once
// Files and folders below a target folder, reached only through open handles on the folders
// that hold them. No component below the target is ever followed through a link (a reparse
// point on Windows), so a link planted in the target, or swapped in while we work, cannot lead
// a write out of it. Folders are given as relative paths with kPathSeparator between their
// components ("" is the target itself); names are single components.
//
// The folder last reached stays open, with the folders above it, so that a run of names in one
// folder or one deep branch costs one step per name, however deep or wide the tree.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/ErrorCodes.h"
#include "platform/File.h"

namespace platform {

// What stands at a name, looked at without following it.
enum class EntryKind {
    Missing,
    File,    // a regular file
    Folder,  // a real folder, not a link to one
    Other,   // a link, a reparse point, a pipe, a device, a socket
};

// The file itself, whatever name leads to it: two names with equal identities are one file.
struct FileIdentity {
    std::uint64_t volume = 0;
    std::uint64_t file = 0;
    bool operator==(const FileIdentity&) const = default;
};

class TargetTree {
public:
    TargetTree();
    ~TargetTree();
    TargetTree(const TargetTree&) = delete;
    TargetTree& operator=(const TargetTree&) = delete;

    // Opens the target folder itself; links on the way to it are the user's choice and are
    // followed. An empty path is the root of the file system.
    ErrorCode Open(const std::u16string& root);

    // Creates the last component of `folder`; what stands above it must exist.
    // kErrorAlreadyExists when a folder of that name is there.
    ErrorCode MakeFolder(std::u16string_view folder);
    // What stands at `name` in `folder`; `identity` is set unless the kind is Missing.
    ErrorCode Look(std::u16string_view folder, const std::u16string& name, EntryKind& kind,
                   FileIdentity& identity);
    // Creates a new file "<prefix><random>.tmp" in `folder`, never one that exists, and opens it
    // for writing; `name` is the name it got.
    ErrorCode CreateTempFile(std::u16string_view folder, std::u16string_view prefix, File& file,
                             std::u16string& name);
    // Gives the file `from` in `folder` the name `to`, in place of whatever file had that name.
    // The old file loses its name and nothing is written into it, even where other names lead
    // to it. A folder at `to` is not replaced.
    ErrorCode Rename(std::u16string_view folder, const std::u16string& from,
                     const std::u16string& to);
    // Deletes the name `name` in `folder` if it is a file; never a folder.
    ErrorCode RemoveFile(std::u16string_view folder, const std::u16string& name);

private:
    struct Chain;
    // Opens the folders of `folder` down from the target, as far as they are not open already.
    ErrorCode Reach(std::u16string_view folder, std::intptr_t& handle);

    std::unique_ptr<Chain> chain_;
};

// The identity of an open file.
ErrorCode IdentityOf(const File& file, FileIdentity& identity);

}  // namespace platform
