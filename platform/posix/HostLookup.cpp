#include "platform/HostLookup.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "platform/Text.h"
#include "platform/posix/Errno.h"

namespace platform {
namespace {

constexpr ErrorCode kWsaInvalidArgument = 10022;
constexpr ErrorCode kWsaSocketTypeNotSupported = 10044;
constexpr ErrorCode kWsaFamilyNotSupported = 10047;
// What a system without NetBIOS and share queries answers for them.
constexpr ErrorCode kNotSupported = kErrorNotSupported;

// The resolver's codes as the Windows socket library reports them.
ErrorCode FromResolverCode(int code) {
    switch (code) {
        case 0:
            return kErrorSuccess;
        case EAI_NONAME:
            return kWsaHostNotFound;
        case EAI_AGAIN:
            return kWsaTryAgain;
        case EAI_FAIL:
            return kWsaNoRecovery;
#ifdef EAI_NODATA
        case EAI_NODATA:
#endif
#ifdef EAI_ADDRFAMILY
        case EAI_ADDRFAMILY:
#endif
            return kWsaNoData;
        case EAI_MEMORY:
            return kErrorNotEnoughMemory;
        case EAI_FAMILY:
            return kWsaFamilyNotSupported;
        case EAI_SERVICE:
            return kWsaTypeNotFound;
        case EAI_SOCKTYPE:
            return kWsaSocketTypeNotSupported;
        case EAI_BADFLAGS:
            return kWsaInvalidArgument;
        case EAI_OVERFLOW:
            return kWsaFault;
        case EAI_SYSTEM:
            return posix::LastError();
        default:
            return kWsaNoRecovery;
    }
}

int NameFlags(int windowsFlags) {
    int flags = 0;
    if ((windowsFlags & kNameNoFqdn) != 0) {
        flags |= NI_NOFQDN;
    }
    if ((windowsFlags & kNameNumericHost) != 0) {
        flags |= NI_NUMERICHOST;
    }
    if ((windowsFlags & kNameRequired) != 0) {
        flags |= NI_NAMEREQD;
    }
    return flags;
}

struct AddrInfoFree {
    void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};

}  // namespace

HostAddresses ResolveIpv4(std::u16string_view host) {
    // One entry for each address rather than one for each socket type.
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int code = ::getaddrinfo(Utf16ToUtf8(host).c_str(), nullptr, &hints, &found);
    const std::unique_ptr<addrinfo, AddrInfoFree> list(found);
    HostAddresses result;
    result.Code = FromResolverCode(code);
    if (code != 0) {
        return result;
    }
    for (const addrinfo* entry = list.get(); entry != nullptr; entry = entry->ai_next) {
        if (entry->ai_family == AF_INET && entry->ai_addr != nullptr &&
            entry->ai_addrlen >= sizeof(sockaddr_in)) {
            sockaddr_in address{};
            std::memcpy(&address, entry->ai_addr, sizeof address);
            result.Addresses.push_back(ntohl(address.sin_addr.s_addr));
        }
    }
    return result;
}

NamedAnswer NameOfIpv4(std::uint32_t hostOrder, int flags) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(hostOrder);
    char name[260] = {};
    const int code = ::getnameinfo(reinterpret_cast<const sockaddr*>(&address), sizeof address,
                                   name, sizeof name, nullptr, 0, NameFlags(flags));
    if (code != 0) {
        return {FromResolverCode(code), {}};
    }
    return {kErrorSuccess, Utf8ToUtf16(name)};
}

NamedAnswer NetbiosNameOf(std::uint32_t) {
    return {kWsaNoData, {}};
}

NamedAnswer ShareLocalPath(std::u16string_view, std::u16string_view) {
    return {kNotSupported, {}};
}

}  // namespace platform
