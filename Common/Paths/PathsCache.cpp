#include "Common/Paths/PathsCache.h"

namespace Zelmarik {

std::shared_ptr<CPathsCache::Keeper> ProcessPathsCacheKeeper() {
    static const std::shared_ptr<CPathsCache::Keeper> keeper =
        std::make_shared<CPathsCache::Keeper>();
    return keeper;
}

namespace {

// The keeper exists from start-up, as the process's other keepers do.
[[maybe_unused]] const bool kKeeperMadeAtStart = (ProcessPathsCacheKeeper(), true);

}  // namespace

}  // namespace Zelmarik
