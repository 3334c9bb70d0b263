#pragma once
// The process-wide pool behind RandomStart, RandomStop and RandomGetBytes.

#include <memory>

#include "platform/EntropySources.h"

namespace crypto::random {

using SourcesFactory = std::unique_ptr<platform::EntropySources> (*)();

// RandomStart with the sources `openSources` gives (RandomStart uses the system's). Opened after
// the hooks are installed; a null result counts as a failed start.
void StartPool(SourcesFactory openSources);

// The sources that RandomStart opens from now on; null gives back the system's. A factory that
// gives nothing makes every start fail, as a system without the needed resources would.
void SetStartSources(SourcesFactory openSources);

}  // namespace crypto::random
