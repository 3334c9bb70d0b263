#include "platform/HostLookup.h"

// The socket headers before windows.h, the network headers after it.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <windows.h>

#include <iphlpapi.h>
#include <lm.h>
#include <nb30.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace platform {
namespace {

std::wstring Wide(std::u16string_view text) {
    return std::wstring(text.begin(), text.end());
}

std::u16string Portable(const wchar_t* text) {
    return std::u16string(reinterpret_cast<const char16_t*>(text));
}

// The socket library for the length of one call.
class SocketSession {
public:
    SocketSession() {
        WSADATA data;
        started_ = ::WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }
    ~SocketSession() {
        if (started_) {
            ::WSACleanup();
        }
    }
    SocketSession(const SocketSession&) = delete;
    SocketSession& operator=(const SocketSession&) = delete;

    bool Started() const { return started_; }

private:
    bool started_ = false;
};

// Suffixes of the unique names a NetBIOS host registers for itself and its services.
constexpr std::array<UCHAR, 24> kHostNameSuffixes = {
    0x00, 0x01, 0x03, 0x06, 0x1F, 0x20, 0x21, 0x22, 0x23, 0x24, 0x2B, 0x30,
    0x31, 0x42, 0x43, 0x44, 0x45, 0x46, 0x4C, 0x52, 0x6A, 0x87, 0xBE, 0xBF};
constexpr UCHAR kNameStateMask = 0x7F;
constexpr UCHAR kRegisteredName = 4;
constexpr UCHAR kGroupNameBit = 0x80;
constexpr std::size_t kStatusBufferSize = 420;

// An adapter status answer: the status block, then the name table.
struct StatusAnswer {
    ADAPTER_STATUS status;
    NAME_BUFFER names[(kStatusBufferSize - sizeof(ADAPTER_STATUS)) / sizeof(NAME_BUFFER)];
};

bool ResetAdapter(UCHAR lana) {
    NCB ncb{};
    ncb.ncb_command = NCBRESET;
    ncb.ncb_lana_num = lana;
    ncb.ncb_callname[0] = 20;  // sessions
    ncb.ncb_callname[2] = 20;  // names
    return ::Netbios(&ncb) == NRC_GOODRET;
}

// Asks the adapter `lana` for the status of `callName`: "*" for itself, else an address.
bool AdapterStatus(UCHAR lana, const std::string& callName, StatusAnswer& answer) {
    NCB ncb{};
    ncb.ncb_command = NCBASTAT;
    ncb.ncb_lana_num = lana;
    std::memset(ncb.ncb_callname, ' ', NCBNAMSZ);
    std::memcpy(ncb.ncb_callname, callName.data(),
                std::min<std::size_t>(callName.size(), NCBNAMSZ));
    std::memset(&answer, 0, sizeof answer);
    ncb.ncb_buffer = reinterpret_cast<PUCHAR>(&answer);
    ncb.ncb_length = sizeof answer;
    return ::Netbios(&ncb) == NRC_GOODRET;
}

// An IPv4 address as four decimal numbers; 0 for a text that is not one.
std::uint32_t ReadAddress(const char* text) {
    unsigned a = 0, b = 0, c = 0, d = 0;
    if (std::sscanf(text, "%u.%u.%u.%u", &a, &b, &c, &d) != 4) {
        return 0;
    }
    return (a & 0xFF) << 24 | (b & 0xFF) << 16 | (c & 0xFF) << 8 | (d & 0xFF);
}

std::string DottedText(std::uint32_t hostOrder) {
    char text[16];
    std::snprintf(text, sizeof text, "%u.%u.%u.%u", hostOrder >> 24, (hostOrder >> 16) & 0xFF,
                  (hostOrder >> 8) & 0xFF, hostOrder & 0xFF);
    return text;
}

// Whether one of the adapter's own addresses shares its subnet with `wanted`.
bool AdapterReaches(const IP_ADAPTER_INFO& adapter, std::uint32_t wanted) {
    for (const IP_ADDR_STRING* address = &adapter.IpAddressList; address != nullptr;
         address = address->Next) {
        const std::uint32_t own = ReadAddress(address->IpAddress.String);
        const std::uint32_t mask = ReadAddress(address->IpMask.String);
        if ((own & mask) == (wanted & mask)) {
            return true;
        }
    }
    return false;
}

const IP_ADAPTER_INFO* AdapterWithHardwareAddress(const IP_ADAPTER_INFO* adapters,
                                                  const UCHAR* hardware) {
    for (const IP_ADAPTER_INFO* adapter = adapters; adapter != nullptr; adapter = adapter->Next) {
        const std::size_t length = std::min<std::size_t>(adapter->AddressLength, 6);
        if (std::memcmp(adapter->Address, hardware, length) == 0) {
            return adapter;
        }
    }
    return nullptr;
}

// The first registered unique name with a host suffix, trailing blanks removed.
std::u16string HostNameIn(const StatusAnswer& answer) {
    const std::size_t count = std::min<std::size_t>(answer.status.name_count,
                                                    sizeof answer.names / sizeof answer.names[0]);
    for (std::size_t i = 0; i < count; ++i) {
        const NAME_BUFFER& entry = answer.names[i];
        const UCHAR suffix = static_cast<UCHAR>(entry.name[NCBNAMSZ - 1]);
        if ((entry.name_flags & kNameStateMask) != kRegisteredName ||
            (entry.name_flags & kGroupNameBit) != 0 ||
            std::find(kHostNameSuffixes.begin(), kHostNameSuffixes.end(), suffix) ==
                kHostNameSuffixes.end()) {
            continue;
        }
        std::size_t length = NCBNAMSZ - 1;
        while (length > 0 && entry.name[length - 1] == ' ') {
            --length;
        }
        std::u16string name;
        for (std::size_t c = 0; c < length; ++c) {
            name.push_back(static_cast<unsigned char>(entry.name[c]));
        }
        return name;
    }
    return {};
}

}  // namespace

HostAddresses ResolveIpv4(std::u16string_view host) {
    const SocketSession session;
    if (!session.Started()) {
        return {kWsaNotInitialised, {}};
    }
    // One entry for each address rather than one for each socket type.
    ADDRINFOW hints{};
    hints.ai_socktype = SOCK_STREAM;
    ADDRINFOW* found = nullptr;
    const int code = ::GetAddrInfoW(Wide(host).c_str(), nullptr, &hints, &found);
    if (code != 0) {
        return {static_cast<ErrorCode>(code), {}};
    }
    HostAddresses result;
    for (const ADDRINFOW* entry = found; entry != nullptr; entry = entry->ai_next) {
        if (entry->ai_family == AF_INET && entry->ai_addr != nullptr &&
            entry->ai_addrlen >= sizeof(sockaddr_in)) {
            sockaddr_in address;
            std::memcpy(&address, entry->ai_addr, sizeof address);
            result.Addresses.push_back(ntohl(address.sin_addr.s_addr));
        }
    }
    ::FreeAddrInfoW(found);
    return result;
}

NamedAnswer NameOfIpv4(std::uint32_t hostOrder, int flags) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(hostOrder);
    const SocketSession session;
    if (!session.Started()) {
        return {kWsaNotInitialised, {}};
    }
    wchar_t name[260] = {};
    const int code = ::GetNameInfoW(reinterpret_cast<const sockaddr*>(&address), sizeof address,
                                    name, 260, nullptr, 0, flags);
    if (code != 0) {
        return {static_cast<ErrorCode>(code), {}};
    }
    return {kErrorSuccess, Portable(name)};
}

NamedAnswer NetbiosNameOf(std::uint32_t hostOrder) {
    LANA_ENUM lanas{};
    NCB ncb{};
    ncb.ncb_command = NCBENUM;
    ncb.ncb_buffer = reinterpret_cast<PUCHAR>(&lanas);
    ncb.ncb_length = sizeof lanas;
    if (::Netbios(&ncb) != NRC_GOODRET) {
        return {kWsaFault, {}};
    }
    ULONG size = 0;
    if (::GetAdaptersInfo(nullptr, &size) != ERROR_BUFFER_OVERFLOW || size == 0) {
        return {kWsaFault, {}};
    }
    std::vector<unsigned char> buffer(size);
    auto* adapters = reinterpret_cast<IP_ADAPTER_INFO*>(buffer.data());
    if (::GetAdaptersInfo(adapters, &size) != NO_ERROR) {
        return {kWsaFault, {}};
    }

    std::u16string found;
    const std::size_t count = std::min<std::size_t>(lanas.length, MAX_LANA + 1);
    for (std::size_t i = 0; i < count; ++i) {
        const UCHAR lana = lanas.lana[i];
        StatusAnswer own;
        if (!ResetAdapter(lana) || !AdapterStatus(lana, "*", own)) {
            continue;
        }
        const IP_ADAPTER_INFO* adapter =
            AdapterWithHardwareAddress(adapters, own.status.adapter_address);
        if (adapter == nullptr || !AdapterReaches(*adapter, hostOrder)) {
            continue;
        }
        // A later adapter that reaches the address replaces what an earlier one found.
        StatusAnswer remote;
        if (ResetAdapter(lana) && AdapterStatus(lana, DottedText(hostOrder), remote)) {
            const std::u16string name = HostNameIn(remote);
            if (!name.empty()) {
                found = name;
            }
        }
    }
    if (found.empty()) {
        return {kWsaNoData, {}};
    }
    return {kErrorSuccess, found};
}

NamedAnswer ShareLocalPath(std::u16string_view server, std::u16string_view share) {
    std::wstring serverName = Wide(server);
    std::wstring shareName = Wide(share);
    LPBYTE buffer = nullptr;
    const NET_API_STATUS status =
        ::NetShareGetInfo(serverName.data(), shareName.data(), 502, &buffer);
    if (status != NERR_Success) {
        if (buffer != nullptr) {
            ::NetApiBufferFree(buffer);
        }
        return {status, {}};
    }
    const auto* info = reinterpret_cast<const SHARE_INFO_502*>(buffer);
    NamedAnswer answer;
    if (info == nullptr || info->shi502_path == nullptr) {
        answer.Code = kErrorInvalidName;
    } else {
        answer.Text = Portable(info->shi502_path);
    }
    if (buffer != nullptr) {
        ::NetApiBufferFree(buffer);
    }
    return answer;
}

}  // namespace platform
