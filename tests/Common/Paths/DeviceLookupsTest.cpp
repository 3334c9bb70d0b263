#include "Common/Paths/DeviceLookups.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Common/Paths/DeviceTable.h"
#include "platform/File.h"
#include "platform/VolumeInfo.h"
#include "tests/TestFolder.h"

namespace {

using Zelmarik::HostAddressesAnswer;
using Zelmarik::ResolveHostAddressesWith;
using Addresses = std::vector<std::uint32_t>;

constexpr std::uint32_t Ip(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
    return a << 24 | b << 16 | c << 8 | d;
}
constexpr std::uint32_t kLoopback = Ip(127, 0, 0, 1);

bool IsWindows() {
    return platform::kPathSeparator == u'\\';
}

// The test's own hosts table, in the order a resolver would give the addresses.
platform::HostAddresses TableResolver(std::u16string_view host) {
    static const std::map<std::u16string_view, Addresses> hosts = {
        {u"mixed", {Ip(8, 8, 8, 8), Ip(10, 0, 0, 5)}},
        {u"above-172", {Ip(172, 32, 0, 1), Ip(172, 31, 0, 1)}},
        {u"below-172", {Ip(172, 15, 255, 255), Ip(172, 16, 0, 0)}},
        {u"near-192", {Ip(192, 169, 0, 1), Ip(11, 0, 0, 1), Ip(192, 168, 4, 4)}},
        {u"v6-only", {}},
    };
    const auto found = hosts.find(host);
    if (found == hosts.end()) {
        return {platform::kWsaHostNotFound, {}};
    }
    return {0, found->second};
}

TEST(ResolveHostAddresses, PrefersThePrivateAddressAndKeepsTheOrder) {
    EXPECT_EQ(ResolveHostAddressesWith(&TableResolver, u"mixed"),
              HostAddressesAnswer(0, u"10.0.0.5", {Ip(8, 8, 8, 8), Ip(10, 0, 0, 5)}));
    // 172.16 to 172.31 are private, their neighbours are not; so is 192.168 but not 192.169.
    EXPECT_EQ(std::get<1>(ResolveHostAddressesWith(&TableResolver, u"above-172")), u"172.31.0.1");
    EXPECT_EQ(std::get<1>(ResolveHostAddressesWith(&TableResolver, u"below-172")), u"172.16.0.0");
    EXPECT_EQ(std::get<1>(ResolveHostAddressesWith(&TableResolver, u"near-192")), u"192.168.4.4");
    // Failures carry their code and nothing else.
    EXPECT_EQ(ResolveHostAddressesWith(&TableResolver, u"v6-only"),
              HostAddressesAnswer(11001, u"", {}));
}

TEST(ResolveHostAddresses, LoopbackThroughTheSystemResolver) {
    EXPECT_EQ(Zelmarik::ResolveHostAddresses(u"127.0.0.1"),
              HostAddressesAnswer(0, u"127.0.0.1", {kLoopback}));
    const auto [code, text, all] = Zelmarik::ResolveHostAddresses(u"localhost");
    ASSERT_EQ(code, 0);
    EXPECT_NE(std::find(all.begin(), all.end(), kLoopback), all.end());
    EXPECT_EQ(text, Zelmarik::Ipv4ToText(all.front()));
}

TEST(Ipv4Text, ParsesPrintsAndLooksUpNumericHosts) {
    EXPECT_EQ(Zelmarik::ParseIpv4(u"192.168.0.255"), Ip(192, 168, 0, 255));
    EXPECT_EQ(Zelmarik::ParseIpv4(u"10,1,2,3"), Ip(10, 1, 2, 3));
    for (const char16_t* bad : {u"", u"1.2.3", u"256.1.1.1", u"1..2.3"}) {
        EXPECT_FALSE(Zelmarik::ParseIpv4(bad).has_value());
    }
    EXPECT_EQ(Zelmarik::Ipv4ToText(Ip(172, 31, 0, 1)), u"172.31.0.1");
    EXPECT_EQ(Zelmarik::LookupHostName(u"no address", 0), Zelmarik::TextAnswer(10022, u""));
    EXPECT_EQ(Zelmarik::LookupHostName(u"127.0.0.1", platform::kNameNumericHost),
              Zelmarik::TextAnswer(0, u"127.0.0.1"));
}

TEST(VolumeLookups, RootAndFileSystemOfLocalPaths) {
    tests::TestFolder folder;
    const auto [code, root] = Zelmarik::QueryVolumeRoot(folder.Root());
    ASSERT_EQ(code, 0);
    ASSERT_FALSE(root.empty());
    EXPECT_EQ(root.back(), platform::kPathSeparator);
    // A path that does not exist yet lies on the volume of the folder it would be made in.
    EXPECT_EQ(Zelmarik::QueryVolumeRoot(folder.Path(u"not-yet")), Zelmarik::TextAnswer(0, root));

    const auto [fsCode, fileSystem, flags] = Zelmarik::QueryVolumeFileSystem(root);
    EXPECT_EQ(fsCode, 0);
    EXPECT_FALSE(fileSystem.empty());
    EXPECT_NE(flags & platform::kCasePreservedNames, 0u);

    EXPECT_EQ(Zelmarik::QueryVolumeFileSystem(u""), Zelmarik::FileSystemAnswer(87, u"", 0));
    // A local path has no UNC form.
    EXPECT_NE(std::get<0>(Zelmarik::QueryUniversalName(folder.Root())), 0);
}

TEST(VolumeLookups, MountTableAnswersForPosixPaths) {
    if (IsWindows()) {
        GTEST_SKIP() << "the mount table is the POSIX side's source";
    }
    EXPECT_EQ(Zelmarik::QueryVolumeRoot(u"/proc/self/status"), Zelmarik::TextAnswer(0, u"/proc/"));
    EXPECT_EQ(std::get<1>(Zelmarik::QueryVolumeFileSystem(u"/proc/")), u"proc");
    EXPECT_EQ(Zelmarik::QueryVolumeRoot(u"/"), Zelmarik::TextAnswer(0, u"/"));
    // Behind a folder that does not exist, ".." could lead to any mount.
    tests::TestFolder folder;
    EXPECT_EQ(Zelmarik::QueryVolumeRoot(folder.Path(u"gone/../x")), Zelmarik::TextAnswer(3, u""));
}

TEST(NetworkLookups, ShareAndNetbiosFailuresComeAsCodes) {
    const auto [shareCode, sharePath] = Zelmarik::QueryShareLocalPath(u"", u"no-such-share-here");
    EXPECT_NE(shareCode, 0);
    EXPECT_TRUE(sharePath.empty());
    // Nothing answers NetBIOS queries at an address of the documentation range.
    const auto [nameCode, name] = Zelmarik::QueryNetbiosName(u"192.0.2.1");
    EXPECT_NE(nameCode, 0);
    EXPECT_TRUE(name.empty());
    if (!IsWindows()) {
        // The system has neither: the codes of "not supported" and "no name found".
        EXPECT_EQ(shareCode, 50);
        EXPECT_EQ(nameCode, 11004);
    }
}

TEST(DeviceTable, ListsTheVolumeOfTheRootFileSystem) {
    Zelmarik::DeviceTable* table = Zelmarik::ProcessDeviceTable();
    ASSERT_NE(table, nullptr);
    ASSERT_TRUE(Zelmarik::RefreshDeviceTable(nullptr));
    const std::lock_guard<std::mutex> lock(table->Lock);
    EXPECT_EQ(table->VolumeCount, table->Volumes.size());
    if (IsWindows()) {
        // The system drive is a link to a device.
        EXPECT_EQ(table->Drives[2].rfind(u"\\Device\\", 0), 0u);
        return;
    }
    EXPECT_TRUE(std::all_of(table->Drives.begin(), table->Drives.end(),
                            [](const std::u16string& drive) { return drive.empty(); }));
    EXPECT_NE(std::find_if(table->Volumes.begin(), table->Volumes.end(),
                           [](const Zelmarik::VolumeEntry& volume) { return volume.Name == u"/"; }),
              table->Volumes.end());
}

}  // namespace
