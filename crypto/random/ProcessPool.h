#pragma once
// The process-wide pool behind RandomStart, RandomStop and RandomGetBytes.

#include <memory>

#include "platform/EntropySources.h"

namespace crypto::random {

using SourcesFactory = std::unique_ptr<platform::EntropySources> (*)();

// RandomStart with the sources `openSources` gives (RandomStart uses the system's). Opened after
// the hooks are installed; a null result counts as a failed start.
void StartPool(SourcesFactory openSources);

}  // namespace crypto::random
