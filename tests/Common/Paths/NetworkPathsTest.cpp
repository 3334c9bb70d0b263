#include "Common/Paths/NetworkPaths.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Zelmarik::CNetworkPaths;
using Zelmarik::ComparePathForms;

CNetworkPaths AllForms() {
    return CNetworkPaths(u"L:\\", u"\\\\nb\\s\\", u"\\\\fq\\s\\", u"\\\\4\\s\\", u"\\\\6\\s\\");
}

TEST(NetworkPathsChoice, SelectedNetworkAndCachePaths) {
    CNetworkPaths paths = AllForms();
    const std::u16string* byNumber[] = {&paths.Local, &paths.Netbios, &paths.Fqdn, &paths.Ipv4,
                                        &paths.Ipv6};
    for (int selector = 1; selector <= 5; ++selector) {
        paths.PathSelector = selector;
        EXPECT_EQ(&paths.GetSelectedPath(), byNumber[selector - 1]);
    }
    paths.PathSelector = 0;
    EXPECT_EQ(&paths.GetSelectedPath(), &paths.Ipv4);
    paths.Ipv4.clear();
    EXPECT_EQ(&paths.GetSelectedPath(), &paths.Fqdn);
    // A selected form is given even when it is empty.
    paths.PathSelector = 4;
    EXPECT_EQ(&paths.GetSelectedPath(), &paths.Ipv4);

    CNetworkPaths network = AllForms();
    const std::vector<std::u16string*> networkOrder = {&network.Fqdn, &network.Netbios,
                                                       &network.Ipv4, &network.Ipv6};
    for (std::u16string* form : networkOrder) {
        EXPECT_EQ(&network.GetNetworkPath(), form);
        form->clear();
    }
    EXPECT_EQ(&network.GetNetworkPath(), &network.Local);

    CNetworkPaths cache = AllForms();
    const std::vector<std::u16string*> cacheOrder = {&cache.Local, &cache.Ipv4, &cache.Fqdn,
                                                     &cache.Netbios};
    for (std::u16string* form : cacheOrder) {
        EXPECT_EQ(&cache.GetCachePath(), form);
        form->clear();
    }
    EXPECT_EQ(&cache.GetCachePath(), &cache.Ipv6);
}

TEST(NetworkPathsWalk, EachWalkHasItsOwnOrder) {
    CNetworkPaths paths = AllForms();
    paths.Ipv4.clear();

    std::vector<std::u16string> seen;
    EXPECT_FALSE(paths.ForEachPath([&](std::u16string& form) {
        seen.push_back(form);
        return false;
    }));
    EXPECT_EQ(seen, (std::vector<std::u16string>{u"L:\\", u"\\\\fq\\s\\", u"\\\\nb\\s\\",
                                                 u"\\\\6\\s\\"}));

    seen.clear();
    EXPECT_FALSE(paths.ForEachPathConst([&](const std::u16string& form) {
        seen.push_back(form);
        return false;
    }));
    EXPECT_EQ(seen, (std::vector<std::u16string>{u"L:\\", u"\\\\nb\\s\\", u"\\\\fq\\s\\",
                                                 u"\\\\6\\s\\"}));

    std::vector<std::pair<std::u16string, std::u16string>> pairs;
    const CNetworkPaths other(u"a", u"b", u"", u"d", u"e");
    EXPECT_FALSE(
        paths.ForEachPathPair(other, [&](const std::u16string& l, const std::u16string& r) {
            pairs.emplace_back(l, r);
            return false;
        }));
    EXPECT_EQ(pairs,
              (std::vector<std::pair<std::u16string, std::u16string>>{{u"L:\\", u"a"},
                                                                      {u"\\\\nb\\s\\", u"b"},
                                                                      {u"\\\\fq\\s\\", u""},
                                                                      {u"", u"d"},
                                                                      {u"\\\\6\\s\\", u"e"}}));
}

TEST(NetworkPathsWalk, StopsAtTheFirstTrueAndConstWalkSeesCopies) {
    CNetworkPaths paths = AllForms();
    int calls = 0;
    EXPECT_TRUE(paths.ForEachPath([&](std::u16string& form) {
        ++calls;
        return form == u"\\\\fq\\s\\";
    }));
    EXPECT_EQ(calls, 2);

    // Changing the object during the walk does not change what the walk sees.
    std::vector<std::u16string> seen;
    paths.ForEachPathConst([&](const std::u16string& form) {
        paths.Netbios = u"changed";
        seen.push_back(form);
        return false;
    });
    EXPECT_EQ(seen[1], u"\\\\nb\\s\\");
    EXPECT_EQ(seen.size(), 5u);
}

TEST(NetworkPathsWalk, AddSlashEndsEveryFormButEmptyOnes) {
    CNetworkPaths paths(u"C:\\a", u"\\\\pc\\c$\\a\\", u"", u"\\\\1.2.3.4\\s", u"");
    paths.AddSlash();
    EXPECT_EQ(paths.Local, u"C:\\a\\");
    EXPECT_EQ(paths.Netbios, u"\\\\pc\\c$\\a\\");
    EXPECT_EQ(paths.Fqdn, u"");
    EXPECT_EQ(paths.Ipv4, u"\\\\1.2.3.4\\s\\");
    EXPECT_EQ(paths.Ipv6, u"");
    paths.Separator = u'/';
    paths.AddSlash();
    EXPECT_EQ(paths.Local, u"C:\\a\\/");
}

TEST(PathForms, CompareIgnoringCaseAndOneTrailingSeparator) {
    EXPECT_EQ(ComparePathForms(u'\\', u"\\\\srv\\sh\\", u"\\\\SRV\\SH"), 0);
    EXPECT_EQ(ComparePathForms(u'\\', u"C:\\A", u"c:\\a\\"), 0);
    EXPECT_EQ(ComparePathForms(u'\\', u"C:\\a", u"C:\\b"), -1);
    EXPECT_EQ(ComparePathForms(u'\\', u"C:\\B", u"C:\\a"), 1);
    // Only one separator is left out.
    EXPECT_EQ(ComparePathForms(u'\\', u"C:\\a\\\\", u"C:\\a"), 1);
    EXPECT_EQ(ComparePathForms(u'\\', u"C:\\a", u"C:\\ab"), -1);
    EXPECT_EQ(ComparePathForms(u'\\', u"", u"x"), -1);
    EXPECT_EQ(ComparePathForms(u'\\', u"\\", u""), 0);
    // Case folds to lower case: '_' (0x5F) sorts before 'A' folded to 'a' (0x61).
    EXPECT_EQ(ComparePathForms(u'\\', u"_", u"A"), -1);
}

TEST(NetworkPathsEquality, MatchesAPlainPathInAnyForm) {
    const CNetworkPaths paths(u"", u"\\\\NB\\Share", u"", u"\\\\10.0.0.1\\share\\", u"");
    EXPECT_TRUE(paths == std::u16string_view(u"\\\\nb\\share\\"));
    EXPECT_TRUE(paths == std::u16string_view(u"\\\\10.0.0.1\\SHARE"));
    EXPECT_FALSE(paths == std::u16string_view(u"\\\\nb\\share\\x"));
    EXPECT_FALSE(paths == std::u16string_view(u""));
}

TEST(NetworkPathsOrder, OnePairDecidesEquality) {
    const CNetworkPaths a(u"", u"", u"\\\\srv.example\\sh\\", u"", u"");
    const CNetworkPaths b(u"", u"", u"\\\\SRV.example\\sh", u"", u"");
    EXPECT_EQ(a <=> b, std::strong_ordering::equal);
    EXPECT_TRUE(a.IsSamePath(b));

    // Equal Fqdn forms, but Local must match exactly for IsSamePath.
    const CNetworkPaths c(u"C:\\", u"", u"\\\\srv.example\\sh\\", u"", u"");
    const CNetworkPaths d(u"c:\\", u"", u"\\\\srv.example\\sh\\", u"", u"");
    EXPECT_TRUE(c == d);
    EXPECT_FALSE(c.IsSamePath(d));
    EXPECT_FALSE(c.IsSamePath(b));

    // Nothing to compare counts as equal.
    EXPECT_EQ(CNetworkPaths() <=> CNetworkPaths(), std::strong_ordering::equal);
}

TEST(NetworkPathsOrder, TheLastFormThatEitherHasDecides) {
    // Local differs (a < b), Ipv6 differs the other way and comes last.
    const CNetworkPaths a(u"C:\\a", u"", u"", u"", u"\\\\z\\s");
    const CNetworkPaths b(u"C:\\b", u"", u"", u"", u"\\\\y\\s");
    EXPECT_EQ(a <=> b, std::strong_ordering::greater);
    EXPECT_EQ(b <=> a, std::strong_ordering::less);
    // A form that only one side has is compared with the empty string, and decides as the last.
    const CNetworkPaths e(u"C:\\c", u"", u"", u"", u"");
    EXPECT_EQ(e <=> a, std::strong_ordering::less);
    EXPECT_FALSE(e == a);
}

TEST(NetworkPathsRoots, FoldsAllFormsToTheirRoots) {
    CNetworkPaths paths(u"C:\\a\\b\\", u"\\\\pc\\c$\\a\\b\\", u"", u"\\\\1.2.3.4\\c$\\a\\b\\",
                        u"x");
    const CNetworkPaths roots = paths.GetFullRootPaths();
    EXPECT_EQ(roots.Local, u"C:\\");
    EXPECT_EQ(roots.Netbios, u"\\\\pc\\c$\\");
    EXPECT_EQ(roots.Fqdn, u"");
    EXPECT_EQ(roots.Ipv4, u"\\\\1.2.3.4\\c$\\");
    // Shorter than the rest: unchanged, then ended in a backslash.
    EXPECT_EQ(roots.Ipv6, u"x\\");

    const CNetworkPaths network(u"", u"\\\\pc\\sh\\deep\\dir", u"\\\\pc.example\\sh", u"bad", u"");
    const CNetworkPaths networkRoots = network.GetFullRootPaths();
    EXPECT_EQ(networkRoots.Local, u"");
    EXPECT_EQ(networkRoots.Netbios, u"\\\\pc\\sh\\");
    EXPECT_EQ(networkRoots.Fqdn, u"\\\\pc.example\\sh\\");
    EXPECT_EQ(networkRoots.Ipv4, u"bad\\");
}

TEST(NetworkPathsMerge, FillsOnlyEmptyNetworkFormsOfTheSamePath) {
    CNetworkPaths mine(u"C:\\", u"\\\\pc\\c$\\", u"", u"", u"", 1);
    mine.PathFlags = 0x1;
    CNetworkPaths theirs(u"C:\\", u"\\\\other\\c$\\", u"\\\\pc.example\\c$\\", u"", u"", 3);
    theirs.PathFlags = 0x4;
    theirs.CacheTag = 77;
    // Same Local and one matching pair (Local): the same path.
    EXPECT_TRUE(mine.Merge(theirs));
    EXPECT_EQ(mine.Netbios, u"\\\\pc\\c$\\");
    EXPECT_EQ(mine.Fqdn, u"\\\\pc.example\\c$\\");
    EXPECT_EQ(mine.PathFlags, 0x5u);
    EXPECT_EQ(mine.PathSelector, 3);
    EXPECT_EQ(mine.CacheTag, 77u);

    // Nothing left to fill: false, but flags, selector and tag still follow.
    theirs.PathFlags = 0x8;
    theirs.PathSelector = 0;
    theirs.CacheTag = 78;
    EXPECT_FALSE(mine.Merge(theirs));
    EXPECT_EQ(mine.PathFlags, 0xDu);
    EXPECT_EQ(mine.PathSelector, 0);
    EXPECT_EQ(mine.CacheTag, 78u);

    // Another location: nothing changes.
    CNetworkPaths elsewhere(u"D:\\", u"", u"", u"\\\\1.1.1.1\\d$\\", u"");
    elsewhere.PathFlags = 0x10;
    EXPECT_FALSE(mine.Merge(elsewhere));
    EXPECT_EQ(mine.Ipv4, u"");
    EXPECT_EQ(mine.PathFlags, 0xDu);
}

TEST(NetworkPathsText, DebugLogListsTheFormsThatAreSet) {
    EXPECT_EQ(CNetworkPaths().DebugLog(), u"");
    EXPECT_EQ(AllForms().DebugLog(),
              u"Local: L:\\, Netbios: \\\\nb\\s\\, FQDN: \\\\fq\\s\\, Ipv4: \\\\4\\s\\, "
              u"Ipv6: \\\\6\\s\\");
    EXPECT_EQ(CNetworkPaths(u"", u"", u"f", u"", u"6").DebugLog(), u"FQDN: f, Ipv6: 6");
}

}  // namespace
