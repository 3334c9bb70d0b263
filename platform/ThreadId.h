#pragma once
// The operating system's number of the calling thread, as debug records show it.

#include <cstdint>

namespace platform {

std::uint32_t CurrentThreadId();

}  // namespace platform
