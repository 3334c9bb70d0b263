#pragma once
// The running program's own file.

#include <string>

namespace platform {

// What an executable's file name ends with: ".exe" on Windows, nothing elsewhere.
#ifdef _WIN32
inline constexpr char16_t kExecutableSuffix[] = u".exe";
#else
inline constexpr char16_t kExecutableSuffix[] = u"";
#endif

// Full path of the running executable, empty on failure.
std::u16string ModulePath();
// The folder of the running executable with its final separator; empty on failure.
std::u16string GetModuleDirectory();

}  // namespace platform
