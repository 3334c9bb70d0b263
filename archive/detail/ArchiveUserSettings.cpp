#include "archive/detail/ArchiveUserSettings.h"

bool DCCArchiveUserSettings::IsCancelled() const {
    return cancelFlag != nullptr && cancelFlag->load(std::memory_order_relaxed) != 0;
}

void* DCCArchiveUserSettings::Context(std::uint32_t id) const {
    const auto found = callbackContexts.find(id);
    return found == callbackContexts.end() ? nullptr : found->second;
}
