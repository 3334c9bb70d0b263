#pragma once
// Files that hold secrets: created readable and writable by their owner alone.

#include <cstddef>
#include <string>

#include "platform/ErrorCodes.h"

namespace platform {

// Writes `size` bytes as the whole content of the file at `path`. Without `replace` the file
// must not exist yet (kErrorFileExists); with it an existing file is truncated and loses any
// access that others had.
ErrorCode WritePrivateFile(const std::u16string& path, const void* data, std::size_t size,
                           bool replace);

}  // namespace platform
