#pragma once
// Which files of a run can be made without first looking at what stands at their name: those
// in a folder the run made itself, whose name no other name of the run can share. Nothing of
// the user's stood in such a folder, so only the run's own files and folders can stand there.
// A name of ASCII letters, digits, blanks and "._-" (no '~', no component ending in a dot or a
// blank) meets another name only through the case of its letters, on any file system, and the
// names are compared with their case folded. A file that another process puts there meanwhile
// loses its name to the entry, as one put there between a look and the rename would.

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "archive/detail/ArchiveNames.h"

class FreshNames {
public:
    // The run's folders and files, as the archive names them.
    FreshNames(const std::vector<std::u16string>& folders,
               const std::vector<std::u16string>& files);

    // The run made `folder`, a path relative to the target as RelativeArchivePath gives it.
    void FolderMade(std::u16string folder);
    // Whether the file the archive names `name`, at `where`, can be made without a look.
    bool NeedNoLook(std::u16string_view name, const RelativeName& where) const;

private:
    std::unordered_set<std::u16string> madeFolders_;
    std::unordered_set<std::u16string> shared_;  // folded names given more than once
};
