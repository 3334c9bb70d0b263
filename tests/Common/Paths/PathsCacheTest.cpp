#include "Common/Paths/PathsCache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Zelmarik::CNetworkPaths;

// A steady clock that the tests move by hand.
struct FakeClock {
    using duration = std::chrono::nanoseconds;
    using rep = duration::rep;
    using period = duration::period;
    using time_point = std::chrono::time_point<FakeClock>;
    static constexpr bool is_steady = true;

    static time_point now() { return time_point(duration(Now.load())); }
    static void Advance(duration by) { Now += by.count(); }

    static std::atomic<std::int64_t> Now;
};
std::atomic<std::int64_t> FakeClock::Now{1'000'000'000'000};

using Cache = Zelmarik::CPathsCacheBase<CNetworkPaths, FakeClock>;

std::size_t ItemCount(const Cache& cache) {
    const Concurrent::ConcurrentResourceHolder<Cache::ItemList> items(cache.Items);
    return items->size();
}

const CNetworkPaths kShare(u"C:\\a\\b\\", u"\\\\pc\\c$\\a\\b\\", u"", u"", u"");

TEST(PathsCacheExpiry, AliveForOneHourThenGoneOnLookup) {
    Cache cache;
    ASSERT_TRUE(cache.StorePath(kShare));
    FakeClock::Advance(59min);
    EXPECT_TRUE(cache.IsPathCached(kShare, false));
    EXPECT_TRUE(cache.GetCachedPath(u"C:\\a\\").has_value());
    // Exactly one hour old is still alive.
    FakeClock::Advance(1min);
    EXPECT_TRUE(cache.IsPathCached(kShare, false));
    FakeClock::Advance(1min);
    EXPECT_EQ(ItemCount(cache), 1u);
    EXPECT_FALSE(cache.GetCachedPath(u"C:\\a\\").has_value());
    EXPECT_EQ(ItemCount(cache), 0u);

    ASSERT_TRUE(cache.StorePath(kShare));
    FakeClock::Advance(61min);
    EXPECT_FALSE(cache.IsPathCached(kShare, false));
    EXPECT_EQ(ItemCount(cache), 0u);
}

TEST(PathsCacheExpiry, AnExpiredHitTakesItsDuplicatesAlong) {
    Cache cache;
    const CNetworkPaths root(u"D:\\", u"", u"", u"", u"");
    const CNetworkPaths other(u"E:\\", u"", u"", u"", u"");
    {
        // Two threads that store the same location at once leave two items.
        Concurrent::ExclusiveResourceHolder<Cache::ItemList> items(cache.Items.Keeper);
        items->emplace_back(root, Cache::Now());
        items->emplace_back(other, Cache::Now());
        items->emplace_back(root, Cache::Now() + 1);
    }
    FakeClock::Advance(61min);
    EXPECT_FALSE(cache.IsPathCached(root, true));
    EXPECT_EQ(ItemCount(cache), 1u);
    EXPECT_EQ(cache.GetCachedPath(u"D:\\x"), std::nullopt);
}

TEST(PathsCacheExpiry, ClockReadingsFromElsewhereNeitherOverflowNorLiveForever) {
    Cache cache;
    const CNetworkPaths past(u"J:\\", u"", u"", u"", u"");
    const CNetworkPaths future(u"K:\\", u"", u"", u"", u"");
    {
        // As read from a blob written on another boot.
        Concurrent::ExclusiveResourceHolder<Cache::ItemList> items(cache.Items.Keeper);
        items->emplace_back(past, std::numeric_limits<std::int64_t>::min());
        items->emplace_back(future, std::numeric_limits<std::int64_t>::max());
    }
    EXPECT_FALSE(cache.DebugLog().empty());
    EXPECT_FALSE(cache.IsPathCached(past, true));
    EXPECT_TRUE(cache.IsPathCached(future, true));
}

TEST(PathsCacheLookup, FindsTheRootOfAnyPathBelowIt) {
    Cache cache;
    ASSERT_TRUE(cache.StorePath(kShare));
    const std::optional<CNetworkPaths> found = cache.GetCachedPath(u"C:\\x\\");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->Local, u"C:\\");
    EXPECT_EQ(found->Netbios, u"\\\\pc\\c$\\");
    // A network form finds the same entry.
    EXPECT_TRUE(cache.GetCachedPath(u"\\\\PC\\C$\\other\\file.txt").has_value());
    EXPECT_FALSE(cache.GetCachedPath(u"D:\\x\\").has_value());
    EXPECT_FALSE(cache.GetCachedPath(u"").has_value());
}

TEST(PathsCacheStore, TheSameLocationTwiceMergesIntoOneItem) {
    Cache cache;
    EXPECT_FALSE(cache.UpdateCachedPath(kShare, false));
    ASSERT_TRUE(cache.StorePath(kShare));
    const CNetworkPaths more(u"C:\\other\\", u"\\\\ignored\\c$\\other\\",
                             u"\\\\pc.example\\c$\\other\\", u"", u"", 3);
    FakeClock::Advance(50min);
    EXPECT_TRUE(cache.StorePath(more));
    EXPECT_EQ(ItemCount(cache), 1u);
    const std::optional<CNetworkPaths> found = cache.GetCachedPath(u"C:\\");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->Netbios, u"\\\\pc\\c$\\");
    EXPECT_EQ(found->Fqdn, u"\\\\pc.example\\c$\\");
    EXPECT_EQ(found->PathSelector, 3);
    // Nothing new to merge: false, and still one item.
    EXPECT_FALSE(cache.StorePath(more));
    EXPECT_EQ(ItemCount(cache), 1u);
    // The update did not extend the item's life.
    FakeClock::Advance(11min);
    EXPECT_FALSE(cache.IsPathCached(kShare, false));
}

TEST(PathsCacheStore, RootsAreStoredAsGiven) {
    Cache cache;
    const CNetworkPaths roots(u"", u"\\\\nb\\sh\\", u"", u"\\\\10.0.0.2\\sh\\", u"");
    ASSERT_TRUE(cache.StoreRootPath(roots));
    EXPECT_TRUE(cache.IsPathCached(roots, true));
    EXPECT_TRUE(
        cache.IsPathCached(CNetworkPaths(u"", u"\\\\NB\\sh\\deep\\er", u"", u"", u""), false));
    const CNetworkPaths withFqdn(u"", u"", u"\\\\nb.example\\sh\\", u"\\\\10.0.0.2\\SH", u"");
    EXPECT_TRUE(cache.UpdateCachedPath(withFqdn, true));
    EXPECT_EQ(cache.GetCachedPath(u"\\\\nb.example\\sh\\x")->Fqdn, u"\\\\nb.example\\sh\\");
}

TEST(PathsCacheBinary, RoundTripKeepsRawClockReadings) {
    Cache cache;
    ASSERT_TRUE(cache.StorePath(kShare));
    const std::int64_t created = Cache::Now();
    ASSERT_TRUE(cache.StoreRootPath(CNetworkPaths(u"F:\\", u"", u"", u"", u"\\\\v6\\f$\\")));
    const Zelmarik::Blob blob = Zelmarik::SerializeToBlob(cache);
    // Count, then each item: the paths and eight bytes of time.
    ASSERT_GE(blob.Size(), 8u);
    EXPECT_EQ(blob.Data()[4], 2);

    Cache read;
    ASSERT_TRUE(read.StorePath(CNetworkPaths(u"Z:\\gone\\", u"", u"", u"", u"")));
    ASSERT_TRUE(Zelmarik::DeserializeFromBlob(blob.Bytes(), read));
    const Concurrent::ConcurrentResourceHolder<Cache::ItemList> items(read.Items);
    ASSERT_EQ(items->size(), 2u);
    EXPECT_EQ(items->front().Paths.Local, u"C:\\");
    EXPECT_EQ(items->front().Paths.Netbios, u"\\\\pc\\c$\\");
    EXPECT_EQ(items->front().Created, created);
    EXPECT_EQ(items->back().Paths.Ipv6, u"\\\\v6\\f$\\");
}

TEST(PathsCacheBinary, ADamagedItemEmptiesTheList) {
    Cache cache;
    ASSERT_TRUE(cache.StorePath(kShare));
    ASSERT_TRUE(cache.StorePath(CNetworkPaths(u"G:\\", u"", u"", u"", u"")));
    const Zelmarik::Blob blob = Zelmarik::SerializeToBlob(cache);
    std::vector<std::uint8_t> cut(blob.Data() + 4, blob.Data() + blob.Size() - 3);
    Zelmarik::CRawReader reader(cut);
    EXPECT_FALSE(cache.Deserialize(reader));
    EXPECT_EQ(ItemCount(cache), 0u);

    // A count far beyond the data fails without reading past it.
    const std::vector<std::uint8_t> huge = {0xFF, 0xFF, 0xFF, 0xFF, 1, 0};
    Zelmarik::CRawReader hugeReader(huge);
    EXPECT_FALSE(cache.Deserialize(hugeReader));
    EXPECT_EQ(ItemCount(cache), 0u);
}

TEST(PathsCacheText, DebugLogOfItemsWithTheirAge) {
    Cache cache;
    EXPECT_EQ(cache.DebugLog(), u"-none-");
    ASSERT_TRUE(cache.StoreRootPath(CNetworkPaths(u"C:\\", u"", u"", u"", u"")));
    FakeClock::Advance(1h + 2min + 3s);
    ASSERT_TRUE(cache.StoreRootPath(CNetworkPaths(u"", u"\\\\nb\\s\\", u"", u"", u"")));
    FakeClock::Advance(4ms);
    EXPECT_EQ(cache.DebugLog(),
              u"Paths: Local: C:\\ \nLifetime: 1h 2min 3s 4ms, \n"
              u"Paths: Netbios: \\\\nb\\s\\ \nLifetime: 0h 0min 0s 4ms");
}

TEST(PathsCacheThreads, ConcurrentStoresAndLookups) {
    Cache cache;
    constexpr int kThreads = 4;
    constexpr int kDrives = 6;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&cache, t] {
            for (int round = 0; round < 50; ++round) {
                const char16_t drive = static_cast<char16_t>(u'H' + (round + t) % kDrives);
                const std::u16string local = std::u16string{drive} + u":\\dir\\";
                const std::u16string netbios = u"\\\\pc" + std::u16string{drive} + u"\\s\\dir\\";
                cache.StorePath(CNetworkPaths(local, t % 2 == 0 ? netbios : u"", u"", u"", u""));
                cache.GetCachedPath(local);
                cache.DebugLog();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    // Racing stores may append a location twice; every location is there and lookups agree.
    const std::size_t items = ItemCount(cache);
    EXPECT_GE(items, static_cast<std::size_t>(kDrives));
    EXPECT_LE(items, static_cast<std::size_t>(kDrives * kThreads));
    for (int d = 0; d < kDrives; ++d) {
        const std::u16string root = std::u16string{static_cast<char16_t>(u'H' + d)} + u":\\";
        const std::optional<CNetworkPaths> found = cache.GetCachedPath(root + u"x");
        ASSERT_TRUE(found.has_value());
        EXPECT_EQ(found->Local, root);
    }
}

TEST(PathsCacheKeeper, CachesOfTheProcessShareOneList) {
    Zelmarik::CPathsCache first(Zelmarik::ProcessPathsCacheKeeper());
    Zelmarik::CPathsCache second(Zelmarik::ProcessPathsCacheKeeper());
    const CNetworkPaths location(u"Q:\\shared\\", u"\\\\keeper\\q$\\shared\\", u"", u"", u"");
    ASSERT_TRUE(first.StorePath(location));
    const std::optional<CNetworkPaths> found = second.GetCachedPath(u"Q:\\elsewhere");
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->Netbios, u"\\\\keeper\\q$\\");
    // A cache of its own does not see it.
    EXPECT_FALSE(Zelmarik::CPathsCache().GetCachedPath(u"Q:\\elsewhere").has_value());
}

}  // namespace
