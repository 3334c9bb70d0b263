#pragma once
// Names and addresses of hosts: IPv4 addresses of a name, the name of an address, the NetBIOS
// name of an address and the local path of a share on a server. Codes are Windows socket and
// network error numbers on every platform.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ErrorCodes.h"
#include "platform/NamedAnswer.h"

namespace platform {

// Socket error numbers that lookups report.
inline constexpr ErrorCode kWsaNotInitialised = 10093;
inline constexpr ErrorCode kWsaTypeNotFound = 10109;
inline constexpr ErrorCode kWsaHostNotFound = 11001;
inline constexpr ErrorCode kWsaTryAgain = 11002;
inline constexpr ErrorCode kWsaNoRecovery = 11003;
inline constexpr ErrorCode kWsaNoData = 11004;
inline constexpr ErrorCode kWsaFault = 10014;

// Flags of a name lookup, with their Windows values.
inline constexpr int kNameNoFqdn = 0x01;
inline constexpr int kNameNumericHost = 0x02;
inline constexpr int kNameRequired = 0x04;

struct HostAddresses {
    ErrorCode Code = kErrorSuccess;
    // IPv4 addresses in host byte order, in the order the resolver gave them.
    std::vector<std::uint32_t> Addresses;
};

// The IPv4 addresses of `host`; an answer without one is the resolver's code, not an error.
HostAddresses ResolveIpv4(std::u16string_view host);

// The name of the IPv4 address `hostOrder` (host byte order) under the flags above.
NamedAnswer NameOfIpv4(std::uint32_t hostOrder, int flags);

// The NetBIOS name that answers at the IPv4 address `hostOrder` on a local network; 11004 when
// no adapter found one, 10014 when the adapters could not be listed.
NamedAnswer NetbiosNameOf(std::uint32_t hostOrder);

// The local path of `share` on `server`.
NamedAnswer ShareLocalPath(std::u16string_view server, std::u16string_view share);

}  // namespace platform
