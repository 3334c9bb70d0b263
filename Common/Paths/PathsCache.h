#pragma once
// Remembers for one hour which network forms belong to a location, by the root of the
// location, so that a costly lookup of names and addresses need not run again for a path under
// the same root. All access goes through the holders of the item list's lock.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Common/Common/Concurrent.h"
#include "Common/Common/DebugLog.h"
#include "Common/Common/RawSerializer.h"
#include "Common/Paths/NetworkPaths.h"
#include "Common/Paths/PathRoot.h"
#include "Common/RPCCommonLib/LogSerializer.h"

namespace Zelmarik {

// `Clock` gives the steady time the items age by; tests put a clock of their own in.
template <class T, class Clock = std::chrono::steady_clock>
class CPathsCacheBase : public ISerializableEx, public IDebugLog {
public:
    static constexpr std::int64_t ItemLifetime = 3'600'000'000'000;  // one hour in nanoseconds

    class CItem : public ISerializableEx, public IDebugLog {
    public:
        CItem() = default;
        CItem(T paths, std::int64_t created) : Paths(std::move(paths)), Created(created) {}

        bool Serialize(CRawSerializer& out) const override {
            Paths.Serialize(out);
            return out.WriteUInt64(static_cast<std::uint64_t>(Created));
        }
        bool Deserialize(CRawReader& in) override {
            Paths.Deserialize(in);
            std::uint64_t created = 0;
            in.ReadUInt64(created);
            Created = static_cast<std::int64_t>(created);
            return !in.Failed();
        }
        // "Paths: <paths> \nLifetime: 1h 2min 3s 0ms", the age of the item.
        std::u16string DebugLog() const override {
            using std::chrono::duration_cast;
            const std::chrono::nanoseconds age(Age(Now()));
            const auto hours = duration_cast<std::chrono::hours>(age);
            const auto minutes = duration_cast<std::chrono::minutes>(age - hours);
            const auto seconds = duration_cast<std::chrono::seconds>(age - hours - minutes);
            const auto milliseconds =
                duration_cast<std::chrono::milliseconds>(age - hours - minutes - seconds);
            return u"Paths: " + Paths.DebugLog() + u" \nLifetime: " +
                   CLogSerializer::Decimal(hours.count()) + u"h " +
                   CLogSerializer::Decimal(minutes.count()) + u"min " +
                   CLogSerializer::Decimal(seconds.count()) + u"s " +
                   CLogSerializer::Decimal(milliseconds.count()) + u"ms";
        }

        // An item of exactly one hour is still alive.
        bool Expired(std::int64_t now) const {
            if (now <= Created) {
                return false;
            }
            const std::uint64_t age =
                static_cast<std::uint64_t>(now) - static_cast<std::uint64_t>(Created);
            return age > static_cast<std::uint64_t>(ItemLifetime);
        }
        // Wraps instead of overflowing for a time read from a damaged blob.
        std::int64_t Age(std::int64_t now) const {
            return static_cast<std::int64_t>(static_cast<std::uint64_t>(now) -
                                             static_cast<std::uint64_t>(Created));
        }

        T Paths;
        // Steady clock time of creation in nanoseconds.
        std::int64_t Created = 0;
    };

    using ItemList = std::list<CItem>;
    using Keeper = Concurrent::ResourceKeeper<ItemList>;

    // An instance over a list of its own, or over a list that others share.
    explicit CPathsCacheBase(std::shared_ptr<Keeper> keeper = std::make_shared<Keeper>())
        : Items(std::move(keeper)) {}
    ~CPathsCacheBase() override = default;
    CPathsCacheBase(const CPathsCacheBase&) = delete;
    CPathsCacheBase& operator=(const CPathsCacheBase&) = delete;

    static std::int64_t Now() {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch())
            .count();
    }

    bool Serialize(CRawSerializer& out) const override {
        const Concurrent::ConcurrentResourceHolder<ItemList> items(
            Items, kSourceFile,
            "Zelmarik::CPathsCacheBase<class Zelmarik::CNetworkPaths>::Serialize", __LINE__);
        out.WriteUInt32(static_cast<std::uint32_t>(items->size()));
        for (const CItem& item : items) {
            if (!item.Serialize(out)) {
                break;
            }
        }
        return !out.Failed();
    }

    // Replaces the list; a damaged item leaves the list empty.
    bool Deserialize(CRawReader& in) override {
        Concurrent::ExclusiveResourceHolder<ItemList> items(
            Items.Keeper, kSourceFile,
            "Zelmarik::CPathsCacheBase<class Zelmarik::CNetworkPaths>::Deserialize", __LINE__);
        std::uint32_t count = 0;
        in.ReadUInt32(count);
        items->clear();
        for (std::uint32_t i = 0; i < count; ++i) {
            CItem item;
            if (!item.Deserialize(in)) {
                items->clear();
                break;
            }
            items->push_back(std::move(item));
        }
        return !in.Failed();
    }

    // Whether the root of `paths` is cached and alive; an expired entry is dropped.
    virtual bool IsPathCached(const T& paths, bool areRoots) {
        const T roots = areRoots ? paths : paths.GetFullRootPaths();
        Concurrent::ExclusiveResourceHolder<ItemList> items(
            Items.Keeper, kSourceFile,
            "Zelmarik::CPathsCacheBase<class Zelmarik::CNetworkPaths>::IsPathCached", __LINE__);
        return FindAlive(*items, [&roots](const T& cached) { return cached.IsSamePath(roots); }) !=
               nullptr;
    }

    // The cached roots of the location that `path` lies in.
    virtual std::optional<T> GetCachedPath(std::u16string_view path) {
        const std::u16string root = SplitRootPath(path).first;
        Concurrent::ExclusiveResourceHolder<ItemList> items(
            Items.Keeper, kSourceFile,
            "Zelmarik::CPathsCacheBase<class Zelmarik::CNetworkPaths>::GetCachedPath", __LINE__);
        const CItem* found = FindAlive(*items, [&root](const T& cached) { return cached == root; });
        return found == nullptr ? std::nullopt : std::optional<T>(found->Paths);
    }

    // Caches the roots of a full location, or merges them into the entry there is.
    virtual bool StorePath(const T& paths) {
        if (IsPathCached(paths, false)) {
            return UpdateCachedPath(paths, false);
        }
        Append(paths.GetFullRootPaths(),
               "Zelmarik::CPathsCacheBase<class Zelmarik::CNetworkPaths>::StorePath", __LINE__);
        return true;
    }

    // As StorePath, for paths that are roots already.
    virtual bool StoreRootPath(const T& roots) {
        if (IsPathCached(roots, true)) {
            return UpdateCachedPath(roots, true);
        }
        Append(roots, "Zelmarik::CPathsCacheBase<class Zelmarik::CNetworkPaths>::StoreRootPath",
               __LINE__);
        return true;
    }

    // Merges the roots into every entry of the same location, without extending its life. The
    // result is that of the last merge; false when no entry matched.
    virtual bool UpdateCachedPath(const T& paths, bool areRoots) {
        const T roots = areRoots ? paths : paths.GetFullRootPaths();
        Concurrent::ExclusiveResourceHolder<ItemList> items(
            Items.Keeper, kSourceFile,
            "Zelmarik::CPathsCacheBase<class Zelmarik::CNetworkPaths>::UpdateCachedPath", __LINE__);
        bool merged = false;
        for (CItem& item : items) {
            if (item.Paths.IsSamePath(roots)) {
                merged = item.Paths.Merge(roots);
            }
        }
        return merged;
    }

    std::u16string DebugLog() const override {
        return CLogSerializer::CommaContainerDebugLog(Items, u"-none-");
    }

    Concurrent::ResourceOwner<ItemList> Items;

private:
    static constexpr const char* kSourceFile = "Common\\Paths\\PathsCache";

    // The first item that `matches`, when it is alive. An expired hit takes every item equal to
    // it out of the list.
    template <class Match>
    static const CItem* FindAlive(ItemList& items, const Match& matches) {
        const auto found = std::find_if(items.begin(), items.end(), [&matches](const CItem& item) {
            return matches(item.Paths);
        });
        if (found == items.end()) {
            return nullptr;
        }
        if (!found->Expired(Now())) {
            return &*found;
        }
        const T expired = found->Paths;
        items.remove_if([&expired](const CItem& item) { return item.Paths == expired; });
        return nullptr;
    }

    void Append(T roots, const char* function, int line) {
        Concurrent::ExclusiveResourceHolder<ItemList> items(Items.Keeper, kSourceFile, function,
                                                            line);
        items->emplace_back(std::move(roots), Now());
    }
};

using CPathsCache = CPathsCacheBase<CNetworkPaths>;

// The process-wide list of the paths cache, made at start-up; a cache that binds to it shares
// its items with every other such cache in the process.
std::shared_ptr<CPathsCache::Keeper> ProcessPathsCacheKeeper();

}  // namespace Zelmarik
