#pragma once
// The root of a location: the drive of a local path, the share of a UNC path, or the shortcut
// folder of a location in the network shortcuts of a roaming profile.

#include <string>
#include <string_view>
#include <utility>

namespace Zelmarik {

// "C:\" for a drive path (also behind "\\?\"), "\\server\share\" for a UNC path. False for
// anything else, and `root` is left as it was.
bool GetPathRoot(std::u16string_view path, std::u16string& root);

// (root, rest). The root ends in a backslash. A rest of a path that ends in a backslash gets one
// more, so that its length is what a longer form of the same location loses to its root.
std::pair<std::u16string, std::u16string> SplitRootPath(std::u16string_view path);

}  // namespace Zelmarik
