#include "Common/Paths/NetworkPaths.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Zelmarik::CNetworkPaths;
using Zelmarik::ComparePathForms;
using Forms = std::vector<std::u16string>;

CNetworkPaths AllForms() {
    return CNetworkPaths(u"L", u"N", u"F", u"4", u"6");
}

TEST(NetworkPathsChoice, SelectedNetworkAndCachePaths) {
    CNetworkPaths paths = AllForms();
    const Forms byNumber = {u"L", u"N", u"F", u"4", u"6"};
    for (int selector = 1; selector <= 5; ++selector) {
        paths.PathSelector = selector;
        EXPECT_EQ(paths.GetSelectedPath(), byNumber[selector - 1]);
    }
    paths.PathSelector = 0;
    EXPECT_EQ(paths.GetSelectedPath(), u"4");
    paths.Ipv4.clear();
    EXPECT_EQ(paths.GetSelectedPath(), u"F");
    paths.PathSelector = 4;
    EXPECT_EQ(paths.GetSelectedPath(), u"");

    // Each form is chosen while it is set, in the order of the operation.
    auto order = [](auto choose, std::vector<std::u16string CNetworkPaths::*> fields) {
        CNetworkPaths walk = AllForms();
        Forms chosen;
        for (auto field : fields) {
            chosen.push_back(choose(walk));
            walk.*field = u"";
        }
        chosen.push_back(choose(walk));
        return chosen;
    };
    EXPECT_EQ(order([](const CNetworkPaths& p) { return p.GetNetworkPath(); },
                    {&CNetworkPaths::Fqdn, &CNetworkPaths::Netbios, &CNetworkPaths::Ipv4,
                     &CNetworkPaths::Ipv6, &CNetworkPaths::Local}),
              (Forms{u"F", u"N", u"4", u"6", u"L", u""}));
    EXPECT_EQ(order([](const CNetworkPaths& p) { return p.GetCachePath(); },
                    {&CNetworkPaths::Local, &CNetworkPaths::Ipv4, &CNetworkPaths::Fqdn,
                     &CNetworkPaths::Netbios, &CNetworkPaths::Ipv6}),
              (Forms{u"L", u"4", u"F", u"N", u"6", u""}));
}

TEST(NetworkPathsWalk, EachWalkHasItsOwnOrder) {
    CNetworkPaths paths = AllForms();
    paths.Ipv4.clear();
    Forms seen;
    paths.ApplyToAll([&](std::u16string& form) { seen.push_back(form); });
    EXPECT_EQ(seen, (Forms{u"L", u"F", u"N", u"6"}));

    // The const walk sees copies: changing the object on the way changes nothing it visits.
    seen.clear();
    EXPECT_TRUE(paths.ForEachPathConst([&](const std::u16string& form) {
        paths.Fqdn = u"changed";
        seen.push_back(form);
        return form == u"6";
    }));
    EXPECT_EQ(seen, (Forms{u"L", u"N", u"F", u"6"}));
}

TEST(NetworkPathsCompare, FormsIgnoreCaseAndOneTrailingSeparator) {
    EXPECT_EQ(ComparePathForms(u'\\', u"\\\\srv\\sh\\", u"\\\\SRV\\SH"), 0);
    EXPECT_EQ(ComparePathForms(u'\\', u"C:\\a\\\\", u"C:\\a"), 1);
    EXPECT_EQ(ComparePathForms(u'\\', u"C:\\a", u"C:\\ab"), -1);
    // Case folds to lower case: '_' (0x5F) sorts before 'A' folded to 'a'.
    EXPECT_EQ(ComparePathForms(u'\\', u"_", u"A"), -1);

    const CNetworkPaths share(u"", u"\\\\NB\\Share", u"", u"\\\\10.0.0.1\\share\\", u"");
    EXPECT_TRUE(share == std::u16string_view(u"\\\\nb\\share\\"));
    EXPECT_FALSE(share == std::u16string_view(u"\\\\nb\\share\\x"));
}

TEST(NetworkPathsCompare, OnePairDecidesEqualityTheLastFormTheOrder) {
    const CNetworkPaths a(u"", u"", u"\\\\srv.example\\sh\\", u"", u"");
    const CNetworkPaths b(u"", u"", u"\\\\SRV.example\\sh", u"", u"");
    EXPECT_EQ(a <=> b, std::strong_ordering::equal);
    EXPECT_TRUE(a.IsSamePath(b));
    // Local must match exactly for IsSamePath, whatever the other forms say.
    const CNetworkPaths c(u"C:\\", u"", u"\\\\srv.example\\sh\\", u"", u"");
    const CNetworkPaths d(u"c:\\", u"", u"\\\\srv.example\\sh\\", u"", u"");
    EXPECT_TRUE(c == d);
    EXPECT_FALSE(c.IsSamePath(d));

    // Local says less, Ipv6 comes later and says greater; a missing form compares as empty.
    const CNetworkPaths e(u"C:\\a", u"", u"", u"", u"\\\\z\\s");
    const CNetworkPaths f(u"C:\\b", u"", u"", u"", u"\\\\y\\s");
    const CNetworkPaths g(u"C:\\c", u"", u"", u"", u"");
    EXPECT_EQ(e <=> f, std::strong_ordering::greater);
    EXPECT_EQ(g <=> e, std::strong_ordering::less);
}

TEST(NetworkPathsRoots, FoldsAllFormsToTheirRoots) {
    const CNetworkPaths local(u"C:\\a\\b\\", u"\\\\pc\\c$\\a\\b\\", u"", u"\\\\1.2.3.4\\c$\\a\\b\\",
                              u"x");
    const CNetworkPaths roots = local.GetFullRootPaths();
    EXPECT_EQ(roots.Local, u"C:\\");
    EXPECT_EQ(roots.Netbios, u"\\\\pc\\c$\\");
    EXPECT_EQ(roots.Ipv4, u"\\\\1.2.3.4\\c$\\");
    // Shorter than the rest: unchanged but for the slash.
    EXPECT_EQ(roots.Ipv6, u"x\\");

    const CNetworkPaths network(u"", u"\\\\pc\\sh\\deep\\dir", u"\\\\pc.example\\sh", u"bad", u"");
    const CNetworkPaths networkRoots = network.GetFullRootPaths();
    EXPECT_EQ(networkRoots.Netbios, u"\\\\pc\\sh\\");
    EXPECT_EQ(networkRoots.Fqdn, u"\\\\pc.example\\sh\\");
}

TEST(NetworkPathsMerge, FillsOnlyEmptyNetworkFormsOfTheSamePath) {
    CNetworkPaths mine(u"C:\\", u"\\\\pc\\c$\\", u"", u"", u"", 1);
    mine.PathFlags = 0x1;
    CNetworkPaths theirs(u"C:\\", u"\\\\other\\c$\\", u"\\\\pc.example\\c$\\", u"", u"", 3);
    theirs.PathFlags = 0x4;
    theirs.CacheTag = 77;
    EXPECT_TRUE(mine.Merge(theirs));
    EXPECT_EQ(mine.Netbios, u"\\\\pc\\c$\\");
    EXPECT_EQ(mine.Fqdn, u"\\\\pc.example\\c$\\");
    EXPECT_EQ(mine.PathFlags, 0x5u);
    EXPECT_EQ(mine.PathSelector, 3);
    EXPECT_EQ(mine.CacheTag, 77u);

    // Nothing left to fill: false, but flags, selector and tag still follow.
    theirs.PathFlags = 0x8;
    theirs.PathSelector = 0;
    EXPECT_FALSE(mine.Merge(theirs));
    EXPECT_EQ(mine.PathFlags, 0xDu);
    EXPECT_EQ(mine.PathSelector, 0);

    // Another location changes nothing.
    CNetworkPaths elsewhere(u"D:\\", u"", u"", u"\\\\1.1.1.1\\d$\\", u"");
    elsewhere.PathFlags = 0x10;
    EXPECT_FALSE(mine.Merge(elsewhere));
    EXPECT_EQ(mine.Ipv4, u"");
    EXPECT_EQ(mine.PathFlags, 0xDu);
}

}  // namespace
