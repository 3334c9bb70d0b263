#include "Common/Paths/AsyncProcManagerDefault.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <future>
#include <string>
#include <vector>

#include "tests/TestLatch.h"

namespace {

using Zelmarik::AsyncLookupManagers;
using Zelmarik::CAsyncProcManagerDefault;
using Zelmarik::SAsyncInfo;
using Zelmarik::TextAnswer;

// Every fake lookup waits at this gate, so that the test sees the calls while they are pending.
TestLatch* gate = nullptr;

void Pass() {
    gate->arrive_and_wait();
}

Zelmarik::HostAddressesAnswer Addresses(std::u16string_view) {
    Pass();
    return {0, u"10.1.2.3", {0x08080808, 0x0A010203}};
}
TextAnswer HostName(std::u16string_view address, int flags) {
    Pass();
    return {flags, std::u16string(u"name-of-") + std::u16string(address)};
}
TextAnswer Share(std::u16string_view server, std::u16string_view share) {
    Pass();
    return {0, std::u16string(server) + u"|" + std::u16string(share)};
}
TextAnswer Root(std::u16string_view) {
    Pass();
    return {0, u"root"};
}
TextAnswer Netbios(std::u16string_view) {
    Pass();
    return {0, u"NBNAME"};
}
TextAnswer Universal(std::u16string_view) {
    Pass();
    return {0, u"\\\\srv\\share"};
}
Zelmarik::FileSystemAnswer FileSystem(std::u16string_view) {
    Pass();
    return {0, u"NTFS", 0x2F};
}

// One call of each operation, side by side (each lookup has its own lock): the codes and
// states they gave, and what their outputs hold.
struct Calls {
    explicit Calls(const std::u16string& start) : texts(6, start) {}

    void Run(Zelmarik::IAsyncProcManager& manager, bool wait) {
        std::u16string* t = texts.data();
        std::vector<std::future<SAsyncInfo>> calls;
        const auto call = [&](auto lookup) {
            calls.push_back(std::async(std::launch::async, lookup));
        };
        call([&] { return manager.GetIpAddresses(u"host", t[0], addresses, wait); });
        call([&] { return manager.GetHostName(u"1.2.3.4", 7, t[1], wait); });
        call([&] { return manager.GetShareLocalPath(u"srv", u"sh", t[2], wait); });
        call([&] { return manager.GetVolumeRoot(u"C:\\x", t[3], wait); });
        call([&] { return manager.GetNetbiosName(u"1.2.3.4", t[4], wait); });
        call([&] { return manager.GetUniversalName(u"Z:\\", t[5], wait); });
        auto fs = std::async(std::launch::async,
                             [&] { return manager.GetVolumeFileSystem(u"C:\\", wait); });
        for (auto& pending : calls) {
            const SAsyncInfo info = pending.get();
            results.push_back(info.Result);
            states.push_back(info.State);
        }
        const auto [flags, name, info] = fs.get();
        fileSystemFlags = flags;
        texts.push_back(name);
        results.push_back(info.Result);
        states.push_back(info.State);
    }

    std::vector<std::u16string> texts;
    std::vector<std::uint32_t> addresses{99};
    std::uint32_t fileSystemFlags = 1234;
    std::vector<std::uint32_t> results, states;
};

// While the lookups are pending each call gives its default code and leaves its outputs; once
// they answered, the answers come through.
TEST(AsyncProcManagerDefault, PendingCallsGiveDefaultCodesThenTheAnswers) {
    TestLatch pass(8);
    gate = &pass;
    AsyncLookupManagers managers(&Addresses, &HostName, &Share, &Root, &Netbios, &Universal,
                                 &FileSystem);
    CAsyncProcManagerDefault manager(managers);

    Calls pending(u"untouched");
    pending.Run(manager, false);
    EXPECT_EQ(pending.states, std::vector<std::uint32_t>(7, Zelmarik::Running));
    EXPECT_EQ(pending.results, (std::vector<std::uint32_t>{10109, 10109, 2273, 2, 11001, 1200, 3}));
    std::vector<std::u16string> untouched(6, u"untouched");
    untouched.push_back(u"");
    EXPECT_EQ(pending.texts, untouched);
    EXPECT_EQ(pending.addresses, std::vector<std::uint32_t>{99});
    EXPECT_EQ(pending.fileSystemFlags, 0u);

    pass.arrive_and_wait();
    Calls answered(u"");
    answered.Run(manager, true);
    EXPECT_EQ(answered.states, std::vector<std::uint32_t>(7, Zelmarik::Done));
    EXPECT_EQ(answered.results, (std::vector<std::uint32_t>{0, 7, 0, 0, 0, 0, 0}));
    EXPECT_EQ(answered.texts,
              (std::vector<std::u16string>{u"10.1.2.3", u"name-of-1.2.3.4", u"srv|sh", u"root",
                                           u"NBNAME", u"\\\\srv\\share", u"NTFS"}));
    EXPECT_EQ(answered.addresses, (std::vector<std::uint32_t>{0x08080808, 0x0A010203}));
    EXPECT_EQ(answered.fileSystemFlags, 0x2Fu);
}

TEST(AsyncProcManagerDefault, ProcessManagerReachesTheRealLookups) {
    Zelmarik::IAsyncProcManager& manager = Zelmarik::ProcessAsyncProcManager();
    const auto [flags, name, info] = manager.GetVolumeFileSystem(u"", false);
    EXPECT_EQ(info.Result, 87u);
    EXPECT_EQ(info.State, Zelmarik::Done);

    std::u16string address;
    const SAsyncInfo ip = manager.GetIpAddress(u"127.0.0.1", address, true);
    EXPECT_EQ(ip.Result, 0u);
    EXPECT_EQ(ip.State, Zelmarik::Done);
    EXPECT_EQ(address, u"127.0.0.1");
}

}  // namespace
