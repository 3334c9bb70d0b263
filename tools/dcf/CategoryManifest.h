#pragma once
// The data categories that dcf create gives to files, from a JSON manifest: an object that maps
// each file's name in the archive ("reports/2021/a.txt", forward slashes) to an array of
// category objects, each with "id" and optionally "name", "kind", "priority", "hasPriority",
// "unified" and "allData". The mentions of one category are merged, field by field.

#include <string>

#include "tools/dcf/SourceWalk.h"

namespace dcftool {

// Reads the manifest at `path` and hands each listed file its categories. Ends the command for
// a manifest that can't be read or parsed, a category without a valid "id", a field of the
// wrong type or unknown name, two mentions of a category with different values of a field,
// and a name that matches no listed file.
void ApplyCategoryManifest(const std::string& command, const std::string& path,
                           SourceListing& listing);

}  // namespace dcftool
