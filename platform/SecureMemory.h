#pragma once
// Memory that holds keys: a wipe the compiler cannot drop, and pinning against paging.

#include <cstddef>

namespace platform {

void SecureWipe(void* data, std::size_t size);
// Wipes the stack below the caller's frame (32 KiB of it): what the functions it called left
// there once they have returned. Key arithmetic calls it on its way out.
void WipeStackBelow();
// Pins pages in memory; false when the system refuses (tolerated by callers).
bool LockMemory(void* data, std::size_t size);
void UnlockMemory(void* data, std::size_t size);

}  // namespace platform
