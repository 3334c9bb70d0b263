#pragma once
// Names of the name block as paths under a target folder. A name is the item's path from the
// archive's root on, beginning with a backslash and using backslashes.

#include <string>
#include <string_view>

// The target folder less one final separator, if it has one.
std::u16string TargetRoot(const std::u16string& targetPath);

// False for a name that could leave the target or address something else than a plain file or
// folder: no leading backslash, an empty, "." or ".." component, a NUL, ':' or '/', and where
// the backslash separates paths also a reserved device name or a component ending in a dot or
// a blank.
bool IsSafeArchiveName(std::u16string_view name);

// root + name, with the backslashes of the name turned into the platform's separator.
std::u16string JoinArchiveName(const std::u16string& root, std::u16string_view name);

// A name as a path relative to the target, in the platform's form: its folder ("" for the
// target itself) and its last component.
struct RelativeName {
    std::u16string folder;
    std::u16string leaf;
};
RelativeName SplitArchiveName(std::u16string_view name);
// The whole name as such a relative path.
std::u16string RelativeArchivePath(std::u16string_view name);
