#include "Common/Paths/AsyncProcManagerDefault.h"

#include <optional>
#include <utility>

namespace Zelmarik {
namespace {

// A lookup's text answer: its code, and the text written out only when there is an answer.
template <class Manager, class... Args>
SAsyncInfo ProcessText(Manager& manager, std::uint32_t pendingCode, std::u16string& text, bool wait,
                       const Args&... args) {
    auto [state, answer] = manager.Process(wait, args...);
    SAsyncInfo info(pendingCode, state);
    if (answer) {
        info.Result = static_cast<std::uint32_t>(std::get<0>(*answer));
        text = std::move(std::get<1>(*answer));
    }
    return info;
}

// Made at start-up, as the process's other keepers are.
[[maybe_unused]] const bool kManagersMadeAtStart =
    (ProcessAsyncLookupManagers(), ProcessAsyncProcManager(), true);

}  // namespace

AsyncLookupManagers::AsyncLookupManagers()
    : AsyncLookupManagers(&ResolveHostAddresses, &LookupHostName, &QueryShareLocalPath,
                          &QueryVolumeRoot, &QueryNetbiosName, &QueryUniversalName,
                          &QueryVolumeFileSystem) {}

AsyncLookupManagers::AsyncLookupManagers(
    HostAddressesManager::Result (*resolveHostAddresses)(std::u16string_view),
    TextAnswer (*lookupHostName)(std::u16string_view, int),
    TextAnswer (*queryShareLocalPath)(std::u16string_view, std::u16string_view),
    TextAnswer (*queryVolumeRoot)(std::u16string_view),
    TextAnswer (*queryNetbiosName)(std::u16string_view),
    TextAnswer (*queryUniversalName)(std::u16string_view),
    FileSystemAnswer (*queryVolumeFileSystem)(std::u16string_view), SteadyNow now)
    : HostAddresses(resolveHostAddresses, now),
      HostName(lookupHostName, now),
      ShareLocalPath(queryShareLocalPath, now),
      VolumeRoot(queryVolumeRoot, now),
      NetbiosName(queryNetbiosName, now),
      UniversalName(queryUniversalName, now),
      VolumeFileSystem(queryVolumeFileSystem, now) {}

CAsyncProcManagerDefault::CAsyncProcManagerDefault()
    : CAsyncProcManagerDefault(ProcessAsyncLookupManagers()) {}

SAsyncInfo CAsyncProcManagerDefault::GetIpAddress(std::u16string_view host, std::u16string& address,
                                                  bool wait) {
    std::vector<std::uint32_t> ignored;
    return GetIpAddresses(host, address, ignored, wait);
}

SAsyncInfo CAsyncProcManagerDefault::GetIpAddresses(std::u16string_view host,
                                                    std::u16string& address,
                                                    std::vector<std::uint32_t>& addresses,
                                                    bool wait) {
    auto [state, answer] = Managers.HostAddresses.Process(wait, host);
    SAsyncInfo info(kHostLookupPendingCode, state);
    if (answer) {
        info.Result = static_cast<std::uint32_t>(std::get<0>(*answer));
        address = std::move(std::get<1>(*answer));
        addresses = std::move(std::get<2>(*answer));
    }
    return info;
}

SAsyncInfo CAsyncProcManagerDefault::GetHostName(std::u16string_view address, int flags,
                                                 std::u16string& name, bool wait) {
    return ProcessText(Managers.HostName, kHostLookupPendingCode, name, wait, address, flags);
}

SAsyncInfo CAsyncProcManagerDefault::GetShareLocalPath(std::u16string_view server,
                                                       std::u16string_view share,
                                                       std::u16string& path, bool wait) {
    return ProcessText(Managers.ShareLocalPath, kShareLookupPendingCode, path, wait, server, share);
}

SAsyncInfo CAsyncProcManagerDefault::GetVolumeRoot(std::u16string_view path, std::u16string& root,
                                                   bool wait) {
    return ProcessText(Managers.VolumeRoot, kVolumeRootPendingCode, root, wait, path);
}

SAsyncInfo CAsyncProcManagerDefault::GetNetbiosName(std::u16string_view address,
                                                    std::u16string& name, bool wait) {
    return ProcessText(Managers.NetbiosName, kNetbiosPendingCode, name, wait, address);
}

SAsyncInfo CAsyncProcManagerDefault::GetUniversalName(std::u16string_view path,
                                                      std::u16string& name, bool wait) {
    return ProcessText(Managers.UniversalName, kUniversalNamePendingCode, name, wait, path);
}

std::tuple<std::uint32_t, std::u16string, SAsyncInfo> CAsyncProcManagerDefault::GetVolumeFileSystem(
    std::u16string_view root, bool wait) {
    auto [state, answer] = Managers.VolumeFileSystem.Process(wait, root);
    if (!answer) {
        return {0, {}, SAsyncInfo(kFileSystemPendingCode, state)};
    }
    auto& [code, name, flags] = *answer;
    return {flags, std::move(name), SAsyncInfo(static_cast<std::uint32_t>(code), state)};
}

AsyncLookupManagers& ProcessAsyncLookupManagers() {
    static AsyncLookupManagers managers;
    return managers;
}

IAsyncProcManager& ProcessAsyncProcManager() {
    static CAsyncProcManagerDefault manager;
    return manager;
}

}  // namespace Zelmarik
