#pragma once
// One location in all the forms under which it can be reached: the local path and the UNC
// paths through the NetBIOS name, the domain name, the IPv4 and the IPv6 address.

#include <compare>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "Common/Common/DebugLog.h"
#include "Common/Common/RawSerializer.h"
#include "Common/Common/XmlSerialize.h"
#include "Common/Paths/ICacheableNetworkPaths.h"

namespace Zelmarik {

// Which form PathSelector names; any other value chooses automatically.
enum PathForm : std::int32_t {
    kLocalForm = 1,
    kNetbiosForm = 2,
    kFqdnForm = 3,
    kIpv4Form = 4,
    kIpv6Form = 5,
};

// Orders two forms of a path: one trailing separator ignored, case folded; -1, 0 or 1.
int ComparePathForms(char16_t separator, std::u16string_view left, std::u16string_view right);

class CNetworkPaths : public virtual ISerializableEx,
                      public virtual IXmlSerialize,
                      public virtual IDebugLog,
                      public virtual ICacheableNetworkPaths<CNetworkPaths> {
public:
    CNetworkPaths() = default;
    CNetworkPaths(std::u16string local, std::u16string netbios, std::u16string fqdn,
                  std::u16string ipv4, std::u16string ipv6, std::int32_t pathSelector = 0);
    CNetworkPaths(const CNetworkPaths&) = default;
    CNetworkPaths& operator=(const CNetworkPaths&) = default;
    ~CNetworkPaths() override = default;

    // The form PathSelector names, empty or not; automatically Ipv4, else the network path.
    virtual const std::u16string& GetSelectedPath() const;
    // The first form that is not empty of Fqdn, Netbios, Ipv4, Ipv6; else Local.
    virtual const std::u16string& GetNetworkPath() const;
    // Calls on copies of the forms that are not empty, Local, Netbios, Fqdn, Ipv4, Ipv6, until
    // a call returns true.
    virtual bool ForEachPathConst(const std::function<bool(const std::u16string&)>& call) const;
    // Calls on the forms themselves that are not empty, Local, Fqdn, Netbios, Ipv4, Ipv6, until
    // a call returns true.
    virtual bool ForEachPath(const std::function<bool(std::u16string&)>& call);
    // Calls on the pairs of like forms, empty ones included, Local, Netbios, Fqdn, Ipv4, Ipv6,
    // until a call returns true.
    virtual bool ForEachPathPair(
        const CNetworkPaths& other,
        const std::function<bool(const std::u16string&, const std::u16string&)>& call) const;

    // Visits every form that is not empty.
    void ApplyToAll(const std::function<void(std::u16string&)>& call);
    // Ends every form that is not empty in Separator.
    void AddSlash();

    // True when any form names `path`.
    bool operator==(std::u16string_view path) const;
    // Equal when one pair of like forms matches; else ordered by the last form either one has.
    std::strong_ordering operator<=>(const CNetworkPaths& other) const;
    bool operator==(const CNetworkPaths& other) const { return (*this <=> other) == 0; }

    CNetworkPaths GetFullRootPaths() const override;
    // The same Local, exactly, and equal as above.
    bool IsSamePath(const CNetworkPaths& other) const override;
    // Only for the same path: accumulates flags, takes selector and tag, and fills empty network
    // forms from the other; true when a form was filled.
    bool Merge(const CNetworkPaths& other) override;
    std::uint32_t GetCacheTag() const override { return CacheTag; }
    // The first form that is not empty of Local, Ipv4, Fqdn, Netbios; else Ipv6.
    const std::u16string& GetCachePath() const override;

    bool Serialize(CRawSerializer& out) const override;
    bool Deserialize(CRawReader& in) override;
    void ReadXml(const IXmlNode* node) override;
    void WriteXml(XmlElementBuilder& element) const override;
    std::u16string DebugLog() const override;

    std::u16string Local;
    std::u16string Netbios;
    std::u16string Fqdn;
    std::u16string Ipv4;
    std::u16string Ipv6;
    std::int32_t PathSelector = 0;
    std::uint32_t CacheTag = 0;
    char16_t Separator = u'\\';
    // Bits that only ever accumulate.
    std::uint32_t PathFlags = 0;
};

}  // namespace Zelmarik
