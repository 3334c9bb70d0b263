#pragma once
// What the paths cache needs of a location: its roots, whether another names the same place,
// merging another's forms, and the form and tag that identify a cache entry.

#include <cstdint>
#include <string>

namespace Zelmarik {

template <class T>
class ICacheableNetworkPaths {
public:
    virtual ~ICacheableNetworkPaths() = default;
    virtual T GetFullRootPaths() const = 0;
    virtual bool IsSamePath(const T& other) const = 0;
    // Takes the other's forms where this one has none; false when nothing was taken.
    virtual bool Merge(const T& other) = 0;
    virtual std::uint32_t GetCacheTag() const = 0;
    virtual const std::u16string& GetCachePath() const = 0;
};

}  // namespace Zelmarik
