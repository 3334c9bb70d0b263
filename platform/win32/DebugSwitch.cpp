#include "platform/DebugSwitch.h"

#include <windows.h>

namespace platform {
namespace {

constexpr std::int32_t kMissing = -1;
// KEY_READ with the 64-bit view of the registry.
constexpr REGSAM kReadAccess = 0x20119;

std::int32_t ReadSetting(HKEY hive) {
    HKEY key = nullptr;
    if (::RegOpenKeyExW(hive, L"Software\\Zelmarik Technologies\\Zelmarik", 0, kReadAccess, &key) !=
        ERROR_SUCCESS) {
        return kMissing;
    }
    DWORD type = 0;
    DWORD value = 0;
    DWORD size = sizeof(value);
    const LSTATUS status = ::RegQueryValueExW(key, L"DebugLocks", nullptr, &type,
                                              reinterpret_cast<BYTE*>(&value), &size);
    ::RegCloseKey(key);
    if (status != ERROR_SUCCESS || type != REG_DWORD || size != sizeof(value)) {
        return kMissing;
    }
    return static_cast<std::int32_t>(value);
}

}  // namespace

std::int32_t MachineDebugLocks() {
    return ReadSetting(HKEY_LOCAL_MACHINE);
}

std::int32_t UserDebugLocks() {
    return ReadSetting(HKEY_CURRENT_USER);
}

}  // namespace platform
