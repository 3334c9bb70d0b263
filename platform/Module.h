#pragma once
// The running program's own file.

#include <string>

namespace platform {

// Full path of the running executable, empty on failure.
std::u16string ModulePath();

}  // namespace platform
