#include "archive/detail/ArchiveUserSettings.h"

#include <algorithm>

std::optional<std::uint32_t> ProgressPercent(std::uint64_t processed, std::uint64_t total) {
    if (total == 0) {
        return std::nullopt;
    }
    const double percent = static_cast<double>(processed) / static_cast<double>(total) * 100.0;
    return static_cast<std::uint32_t>(std::min(percent, 100.0));
}

bool DCCArchiveUserSettings::IsCancelled() const {
    return cancelFlag != nullptr && cancelFlag->load(std::memory_order_relaxed) != 0;
}

void* DCCArchiveUserSettings::Context(std::uint32_t id) const {
    const auto found = callbackContexts.find(id);
    return found == callbackContexts.end() ? nullptr : found->second;
}
