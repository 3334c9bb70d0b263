#pragma once
// The long form of a path, which lifts the length limit of the Windows API.

#include <string>

namespace Zelmarik {

// "C:\d\f" -> "\\?\C:\d\f", "\\srv\sh\f" -> "\\?\UNC\srv\sh\f"; a path that begins with "\\?\"
// stays as it is. Nothing else is examined: a relative path takes the prefix too. Null is taken
// as the empty path.
std::u16string ToLongPath(const char16_t* path);

}  // namespace Zelmarik
