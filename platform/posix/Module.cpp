#include "platform/Module.h"

#include <unistd.h>

#include <vector>

#include "platform/Text.h"

namespace platform {

std::u16string ModulePath() {
    std::vector<char> buffer(4096);
    const ssize_t n = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (n <= 0 || static_cast<std::size_t>(n) >= buffer.size()) {
        return {};
    }
    return Utf8ToUtf16(std::string_view(buffer.data(), static_cast<std::size_t>(n)));
}

}  // namespace platform
