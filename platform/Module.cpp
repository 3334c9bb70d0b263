// The parts of the module queries that do not depend on the system.
#include "platform/Module.h"

#include "platform/File.h"

namespace platform {

std::u16string GetModuleDirectory() {
    const std::u16string path = ModulePath();
    const std::size_t separator = path.find_last_of(kPathSeparator);
    return separator == std::u16string::npos ? std::u16string() : path.substr(0, separator + 1);
}

}  // namespace platform
