#pragma once
// Inside platform/: the system calls under TargetTree, one implementation per platform. Every
// operation works on a name in a folder that is open; none follows a link at that name.

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/ErrorCodes.h"
#include "platform/TargetTree.h"

namespace platform::tree {

using Handle = std::intptr_t;
inline constexpr Handle kNoHandle = -1;

// How many folders below the target stay open at most. Where a folder can be reopened from its
// child (POSIX, through ".."), a few are enough; elsewhere every folder of the branch stays open.
extern const std::size_t kHeldFolders;

// The target folder; a link at its path is followed.
ErrorCode OpenRoot(const std::u16string& path, Handle& folder, FileIdentity& identity);
// The folder `name` in `parent`; with `create` it is made first. A link there is refused.
ErrorCode OpenFolder(Handle parent, const std::u16string& name, bool create, Handle& folder,
                     FileIdentity& identity);
// The folder that holds `folder`. kErrorNotSupported where a system can't tell.
ErrorCode OpenParent(Handle folder, Handle& parent, FileIdentity& identity);
void CloseFolder(Handle folder);

ErrorCode MakeFolder(Handle parent, const std::u16string& name);
ErrorCode Look(Handle folder, const std::u16string& name, EntryKind& kind, FileIdentity& identity);
// A new file, opened for writing; kErrorFileExists when anything has that name.
ErrorCode CreateNewFile(Handle folder, const std::u16string& name, Handle& file);
ErrorCode Rename(Handle folder, const std::u16string& from, const std::u16string& to);
ErrorCode RemoveFile(Handle folder, const std::u16string& name);

}  // namespace platform::tree
