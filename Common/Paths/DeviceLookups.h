#pragma once
// Blocking lookups that translate between a path, a share, a host name and an address. Each
// answers with a code first, 0 for success, and empty or zero values on failure. They may take
// seconds on a network, so callers reach them through the asynchronous managers.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "platform/HostLookup.h"

namespace Zelmarik {

using HostAddressesAnswer = std::tuple<int, std::u16string, std::vector<std::uint32_t>>;
using TextAnswer = std::tuple<int, std::u16string>;
using FileSystemAnswer = std::tuple<int, std::u16string, std::uint32_t>;

// Code, the chosen IPv4 address as text, and all IPv4 addresses in host byte order.
HostAddressesAnswer ResolveHostAddresses(std::u16string_view host);
// The host name of an IPv4 address in dotted text, under name lookup flags.
TextAnswer LookupHostName(std::u16string_view address, int flags);
// The local path of a share on its server.
TextAnswer QueryShareLocalPath(std::u16string_view server, std::u16string_view share);
// The mount root of a path.
TextAnswer QueryVolumeRoot(std::u16string_view path);
// The NetBIOS name of an IPv4 address in dotted text.
TextAnswer QueryNetbiosName(std::u16string_view address);
// The UNC form of a path on a network drive or mount.
TextAnswer QueryUniversalName(std::u16string_view path);
// Code, file system name and file system flags of a volume root.
FileSystemAnswer QueryVolumeFileSystem(std::u16string_view root);

// ResolveHostAddresses over another resolver, such as a table of a test's own.
using HostResolver = platform::HostAddresses (*)(std::u16string_view host);
HostAddressesAnswer ResolveHostAddressesWith(HostResolver resolve, std::u16string_view host);

// 10.0.0.0/8, 172.16.0.0/12 and 192.168.0.0/16, for an address in host byte order.
bool IsPrivateIpv4(std::uint32_t hostOrder);
// The first private address, else the first address; the list is not empty.
std::uint32_t ChooseHostAddress(std::span<const std::uint32_t> hostOrder);
// Dotted decimal text of an address in host byte order.
std::u16string Ipv4ToText(std::uint32_t hostOrder);
// Four decimal numbers of 0 to 255, one character between each two; empty for anything else.
std::optional<std::uint32_t> ParseIpv4(std::u16string_view text);

}  // namespace Zelmarik
