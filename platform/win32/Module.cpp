#include "platform/Module.h"

#include <windows.h>

#include <vector>

namespace platform {

std::u16string ModulePath() {
    std::vector<wchar_t> buffer(4096);
    const DWORD n = ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (n == 0 || n >= buffer.size()) {
        return {};
    }
    return std::u16string(reinterpret_cast<const char16_t*>(buffer.data()), n);
}

}  // namespace platform
