#include "Common/Paths/DeviceLookups.h"

#include "platform/VolumeInfo.h"

namespace Zelmarik {
namespace {

// What the socket library answers for an address text it cannot read.
constexpr int kInvalidArgument = 10022;

int Code(platform::ErrorCode code) {
    return static_cast<int>(code);
}

TextAnswer FromNamed(const platform::NamedAnswer& answer) {
    if (answer.Code != platform::kErrorSuccess) {
        return {Code(answer.Code), {}};
    }
    return {0, answer.Text};
}

// Reads up to three decimal digits; false when there is none or the number is above 255.
bool ReadOctet(std::u16string_view text, std::size_t& at, std::uint32_t& octet) {
    const std::size_t start = at;
    octet = 0;
    while (at < text.size() && at - start < 3 && text[at] >= u'0' && text[at] <= u'9') {
        octet = octet * 10 + static_cast<std::uint32_t>(text[at] - u'0');
        ++at;
    }
    return at > start && octet <= 255;
}

}  // namespace

bool IsPrivateIpv4(std::uint32_t hostOrder) {
    const std::uint32_t first = hostOrder >> 24;
    const std::uint32_t second = (hostOrder >> 16) & 0xFF;
    return first == 10 || (first == 172 && second >= 16 && second <= 31) ||
           (first == 192 && second == 168);
}

std::uint32_t ChooseHostAddress(std::span<const std::uint32_t> hostOrder) {
    for (const std::uint32_t address : hostOrder) {
        if (IsPrivateIpv4(address)) {
            return address;
        }
    }
    return hostOrder.front();
}

std::u16string Ipv4ToText(std::uint32_t hostOrder) {
    std::u16string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const std::string octet = std::to_string((hostOrder >> shift) & 0xFF);
        text.append(octet.begin(), octet.end());
        if (shift != 0) {
            text.push_back(u'.');
        }
    }
    return text;
}

std::optional<std::uint32_t> ParseIpv4(std::u16string_view text) {
    std::uint32_t address = 0;
    std::size_t at = 0;
    for (int i = 0; i < 4; ++i) {
        if (i != 0) {
            if (at >= text.size()) {
                return std::nullopt;
            }
            ++at;
        }
        std::uint32_t octet = 0;
        if (!ReadOctet(text, at, octet)) {
            return std::nullopt;
        }
        address = (address << 8) | octet;
    }
    return address;
}

HostAddressesAnswer ResolveHostAddressesWith(HostResolver resolve, std::u16string_view host) {
    const platform::HostAddresses found = resolve(host);
    if (found.Code != platform::kErrorSuccess) {
        return {Code(found.Code), {}, {}};
    }
    if (found.Addresses.empty()) {
        return {Code(platform::kWsaHostNotFound), {}, {}};
    }
    return {0, Ipv4ToText(ChooseHostAddress(found.Addresses)), found.Addresses};
}

HostAddressesAnswer ResolveHostAddresses(std::u16string_view host) {
    return ResolveHostAddressesWith(&platform::ResolveIpv4, host);
}

TextAnswer LookupHostName(std::u16string_view address, int flags) {
    const std::optional<std::uint32_t> parsed = ParseIpv4(address);
    if (!parsed) {
        return {kInvalidArgument, {}};
    }
    return FromNamed(platform::NameOfIpv4(*parsed, flags));
}

TextAnswer QueryShareLocalPath(std::u16string_view server, std::u16string_view share) {
    return FromNamed(platform::ShareLocalPath(server, share));
}

TextAnswer QueryVolumeRoot(std::u16string_view path) {
    return FromNamed(platform::VolumeRootOf(path));
}

TextAnswer QueryNetbiosName(std::u16string_view address) {
    const std::optional<std::uint32_t> parsed = ParseIpv4(address);
    if (!parsed) {
        return {kInvalidArgument, {}};
    }
    return FromNamed(platform::NetbiosNameOf(*parsed));
}

TextAnswer QueryUniversalName(std::u16string_view path) {
    return FromNamed(platform::UniversalNameOf(path));
}

FileSystemAnswer QueryVolumeFileSystem(std::u16string_view root) {
    if (root.empty()) {
        return {Code(platform::kErrorInvalidParameter), {}, 0};
    }
    const platform::VolumeFileSystem found = platform::VolumeFileSystemOf(root);
    if (found.Code != platform::kErrorSuccess) {
        return {Code(found.Code), {}, 0};
    }
    return {0, found.Name, found.Flags};
}

}  // namespace Zelmarik
