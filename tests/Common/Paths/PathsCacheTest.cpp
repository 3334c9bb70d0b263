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
    return Concurrent::ConcurrentResourceHolder<Cache::ItemList>(cache.Items)->size();
}

void AddItem(Cache& cache, const CNetworkPaths& paths, std::int64_t created) {
    Concurrent::ExclusiveResourceHolder<Cache::ItemList>(cache.Items.Keeper)
        ->emplace_back(paths, created);
}

CNetworkPaths Drive(const char16_t* local) {
    return CNetworkPaths(local, u"", u"", u"", u"");
}

const CNetworkPaths kShare(u"C:\\a\\b\\", u"\\\\pc\\c$\\a\\b\\", u"", u"", u"");

TEST(PathsCacheExpiry, AliveForOneHourThenGoneOnLookup) {
    Cache cache;
    ASSERT_TRUE(cache.StorePath(kShare));
    FakeClock::Advance(59min);
    EXPECT_TRUE(cache.GetCachedPath(u"C:\\a\\").has_value());
    FakeClock::Advance(1min);
    EXPECT_TRUE(cache.IsPathCached(kShare, false));
    FakeClock::Advance(1min);
    EXPECT_FALSE(cache.IsPathCached(kShare, false));
    EXPECT_EQ(ItemCount(cache), 0u);
}

TEST(PathsCacheExpiry, AnExpiredHitTakesItsDuplicatesAlong) {
    Cache cache;
    // Two threads that store the same location at once leave two items.
    AddItem(cache, Drive(u"D:\\"), Cache::Now());
    AddItem(cache, Drive(u"E:\\"), Cache::Now());
    AddItem(cache, Drive(u"D:\\"), Cache::Now() + 1);
    FakeClock::Advance(61min);
    EXPECT_FALSE(cache.GetCachedPath(u"D:\\x").has_value());
    EXPECT_EQ(ItemCount(cache), 1u);
}

TEST(PathsCacheExpiry, ClockReadingsOfAnotherBootNeitherOverflowNorLiveForever) {
    Cache cache;
    AddItem(cache, Drive(u"J:\\"), std::numeric_limits<std::int64_t>::min());
    AddItem(cache, Drive(u"K:\\"), std::numeric_limits<std::int64_t>::max());
    EXPECT_FALSE(cache.DebugLog().empty());
    EXPECT_FALSE(cache.IsPathCached(Drive(u"J:\\"), true));
    EXPECT_TRUE(cache.IsPathCached(Drive(u"K:\\"), true));
}

TEST(PathsCacheStore, LookupsFindTheRootOfAnyPathBelowIt) {
    Cache cache;
    ASSERT_TRUE(cache.StorePath(kShare));
    EXPECT_EQ(cache.GetCachedPath(u"C:\\x\\").value().Netbios, u"\\\\pc\\c$\\");
    EXPECT_TRUE(cache.GetCachedPath(u"\\\\PC\\C$\\other\\file.txt").has_value());
    EXPECT_FALSE(cache.GetCachedPath(u"D:\\x\\").has_value());

    const CNetworkPaths roots(u"", u"\\\\nb\\sh\\", u"", u"\\\\10.0.0.2\\sh\\", u"");
    ASSERT_TRUE(cache.StoreRootPath(roots));
    EXPECT_TRUE(cache.IsPathCached(CNetworkPaths(u"", u"\\\\NB\\sh\\deep", u"", u"", u""), false));
}

TEST(PathsCacheStore, TheSameLocationTwiceMergesWithoutExtendingLife) {
    Cache cache;
    EXPECT_FALSE(cache.UpdateCachedPath(kShare, false));
    ASSERT_TRUE(cache.StorePath(kShare));
    const CNetworkPaths more(u"C:\\other\\", u"\\\\ignored\\c$\\other\\",
                             u"\\\\pc.example\\c$\\other\\", u"", u"", 3);
    FakeClock::Advance(50min);
    EXPECT_TRUE(cache.StorePath(more));
    EXPECT_FALSE(cache.StorePath(more));
    EXPECT_EQ(ItemCount(cache), 1u);
    EXPECT_EQ(cache.GetCachedPath(u"C:\\").value().DebugLog(),
              u"Local: C:\\, Netbios: \\\\pc\\c$\\, FQDN: \\\\pc.example\\c$\\");
    FakeClock::Advance(11min);
    EXPECT_FALSE(cache.IsPathCached(kShare, false));
}

TEST(PathsCacheBinary, RoundTripKeepsRawClockReadingsAndDamageEmptiesTheList) {
    Cache cache;
    ASSERT_TRUE(cache.StorePath(kShare));
    AddItem(cache, CNetworkPaths(u"F:\\", u"", u"", u"", u"\\\\v6\\f$\\"), -5);
    const Zelmarik::Blob blob = Zelmarik::SerializeToBlob(cache);

    Cache read;
    ASSERT_TRUE(read.StorePath(Drive(u"Z:\\gone\\")));
    ASSERT_TRUE(Zelmarik::DeserializeFromBlob(blob.Bytes(), read));
    {
        const Concurrent::ConcurrentResourceHolder<Cache::ItemList> items(read.Items);
        ASSERT_EQ(items->size(), 2u);
        EXPECT_EQ(items->front().Paths.Netbios, u"\\\\pc\\c$\\");
        EXPECT_EQ(items->front().Created, Cache::Now());
        EXPECT_EQ(items->back().Paths.Ipv6, u"\\\\v6\\f$\\");
        EXPECT_EQ(items->back().Created, -5);
    }

    // The second item cut short, and a count far beyond the data.
    const std::vector<std::uint8_t> cut(blob.Data() + 4, blob.Data() + blob.Size() - 3);
    const std::vector<std::uint8_t> huge = {0xFF, 0xFF, 0xFF, 0xFF, 1, 0};
    for (const std::vector<std::uint8_t>& bytes : {cut, huge}) {
        Zelmarik::CRawReader reader(bytes);
        EXPECT_FALSE(read.Deserialize(reader));
        EXPECT_EQ(ItemCount(read), 0u);
    }
}

TEST(PathsCacheThreads, ConcurrentStoresAndLookups) {
    Cache cache;
    constexpr int kThreads = 4;
    constexpr int kDrives = 6;
    auto local = [](int drive) {
        return std::u16string{static_cast<char16_t>(u'H' + drive)} + u":\\";
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 50; ++round) {
                const std::u16string path = local((round + t) % kDrives) + u"dir\\";
                cache.StorePath(
                    CNetworkPaths(path, t % 2 == 0 ? u"\\\\pc\\s\\dir\\" : u"", u"", u"", u""));
                cache.GetCachedPath(path);
                cache.DebugLog();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    // Racing stores may append a location more than once; lookups find every one.
    EXPECT_GE(ItemCount(cache), static_cast<std::size_t>(kDrives));
    EXPECT_LE(ItemCount(cache), static_cast<std::size_t>(kDrives * kThreads));
    for (int d = 0; d < kDrives; ++d) {
        const std::optional<CNetworkPaths> found = cache.GetCachedPath(local(d) + u"x");
        ASSERT_TRUE(found.has_value());
        EXPECT_EQ(found->Local, local(d));
    }
}

TEST(PathsCacheKeeper, CachesOfTheProcessShareOneList) {
    Zelmarik::CPathsCache first(Zelmarik::ProcessPathsCacheKeeper());
    Zelmarik::CPathsCache second(Zelmarik::ProcessPathsCacheKeeper());
    // The list outlives this test: a repeated run merges into the item of the first.
    first.StorePath(CNetworkPaths(u"Q:\\s\\", u"\\\\keeper\\q$\\s\\", u"", u"", u""));
    EXPECT_EQ(second.GetCachedPath(u"Q:\\elsewhere").value().Netbios, u"\\\\keeper\\q$\\");
    EXPECT_FALSE(Zelmarik::CPathsCache().GetCachedPath(u"Q:\\elsewhere").has_value());
}

}  // namespace
