#pragma once
// The "DebugLocks" switch: a machine-wide and a per-user number that make the read-write locks
// record their owners. Windows keeps both as the DWORD value "DebugLocks" under
// "Software\Zelmarik Technologies\Zelmarik" in HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER.
// Elsewhere the machine setting is the file /etc/zelmarik/DebugLocks and the user setting is
// the environment variable ZELMARIK_DEBUG_LOCKS or else the file
// $XDG_CONFIG_HOME/zelmarik/DebugLocks (~/.config/zelmarik/DebugLocks), each holding a decimal
// number.

#include <cstdint>

namespace platform {

// -1 when the setting is missing or is not a number.
std::int32_t MachineDebugLocks();
std::int32_t UserDebugLocks();

}  // namespace platform
