#pragma once
// The asynchronous face of the device and host lookups: one manager for each lookup, and the
// default IAsyncProcManager over them.

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "Common/Common/AsynchronousProcedureCall.h"
#include "Common/Paths/DeviceLookups.h"

namespace Zelmarik {

using HostAddressesManager =
    CAsyncManager<HostAddressesAnswer (*)(std::u16string_view), std::u16string>;
using HostNameManager =
    CAsyncManager<TextAnswer (*)(std::u16string_view, int), std::u16string, int>;
using ShareLocalPathManager =
    CAsyncManager<TextAnswer (*)(std::u16string_view, std::u16string_view), std::u16string,
                  std::u16string>;
using TextLookupManager = CAsyncManager<TextAnswer (*)(std::u16string_view), std::u16string>;
using FileSystemManager = CAsyncManager<FileSystemAnswer (*)(std::u16string_view), std::u16string>;

// The seven managers. By default each holds its lookup; tests give them lookups of their own.
struct AsyncLookupManagers {
    AsyncLookupManagers();
    AsyncLookupManagers(HostAddressesManager::Result (*resolveHostAddresses)(std::u16string_view),
                        TextAnswer (*lookupHostName)(std::u16string_view, int),
                        TextAnswer (*queryShareLocalPath)(std::u16string_view, std::u16string_view),
                        TextAnswer (*queryVolumeRoot)(std::u16string_view),
                        TextAnswer (*queryNetbiosName)(std::u16string_view),
                        TextAnswer (*queryUniversalName)(std::u16string_view),
                        FileSystemAnswer (*queryVolumeFileSystem)(std::u16string_view),
                        SteadyNow now = &SteadyClockNow);

    HostAddressesManager HostAddresses;
    HostNameManager HostName;
    ShareLocalPathManager ShareLocalPath;
    TextLookupManager VolumeRoot;
    TextLookupManager NetbiosName;
    TextLookupManager UniversalName;
    FileSystemManager VolumeFileSystem;
};

// The codes a call reports until its lookup has answered.
inline constexpr std::uint32_t kHostLookupPendingCode = 10109;
inline constexpr std::uint32_t kShareLookupPendingCode = 2273;
inline constexpr std::uint32_t kVolumeRootPendingCode = 2;
inline constexpr std::uint32_t kNetbiosPendingCode = 11001;
inline constexpr std::uint32_t kUniversalNamePendingCode = 1200;
inline constexpr std::uint32_t kFileSystemPendingCode = 3;

class CAsyncProcManagerDefault : public IAsyncProcManager {
public:
    // Over the process's managers.
    CAsyncProcManagerDefault();
    explicit CAsyncProcManagerDefault(AsyncLookupManagers& managers) : Managers(managers) {}

    SAsyncInfo GetIpAddress(std::u16string_view host, std::u16string& address, bool wait) override;
    SAsyncInfo GetIpAddresses(std::u16string_view host, std::u16string& address,
                              std::vector<std::uint32_t>& addresses, bool wait) override;
    SAsyncInfo GetHostName(std::u16string_view address, int flags, std::u16string& name,
                           bool wait) override;
    SAsyncInfo GetShareLocalPath(std::u16string_view server, std::u16string_view share,
                                 std::u16string& path, bool wait) override;
    SAsyncInfo GetVolumeRoot(std::u16string_view path, std::u16string& root, bool wait) override;
    SAsyncInfo GetNetbiosName(std::u16string_view address, std::u16string& name,
                              bool wait) override;
    SAsyncInfo GetUniversalName(std::u16string_view path, std::u16string& name, bool wait) override;
    std::tuple<std::uint32_t, std::u16string, SAsyncInfo> GetVolumeFileSystem(
        std::u16string_view root, bool wait) override;

private:
    AsyncLookupManagers& Managers;
};

// The managers of the process, made at start-up; they wait for their work items at exit.
AsyncLookupManagers& ProcessAsyncLookupManagers();
// The process's IAsyncProcManager, made at start-up.
IAsyncProcManager& ProcessAsyncProcManager();

}  // namespace Zelmarik
