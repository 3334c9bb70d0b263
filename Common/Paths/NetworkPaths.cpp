#include "Common/Paths/NetworkPaths.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cwctype>
#include <optional>
#include <string>

#include "Common/Paths/PathRoot.h"
#include "Common/RPCCommonLib/LogSerializer.h"
#include "platform/Text.h"

namespace Zelmarik {
namespace {

std::u16string_view WithoutTrailingSeparator(std::u16string_view path, char16_t separator) {
    if (!path.empty() && path.back() == separator) {
        path.remove_suffix(1);
    }
    return path;
}

std::wint_t FoldCase(char16_t unit) {
    return std::towlower(static_cast<std::wint_t>(unit));
}

std::strong_ordering OrderingOf(int comparison) {
    return comparison < 0   ? std::strong_ordering::less
           : comparison > 0 ? std::strong_ordering::greater
                            : std::strong_ordering::equal;
}

// The XML keys of the five forms, in their stored order.
constexpr std::array<const char16_t*, 5> kXmlKeys = {u"lfp", u"nbs", u"fqdn", u"ipv4", u"ipv6"};
constexpr const char16_t* kSelectorKey = u"pathSelector";

std::int32_t ParseSelector(const std::string& text) {
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end != text.data() ? value : 0;
}

}  // namespace

int ComparePathForms(char16_t separator, std::u16string_view left, std::u16string_view right) {
    left = WithoutTrailingSeparator(left, separator);
    right = WithoutTrailingSeparator(right, separator);
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i) {
        const std::wint_t l = FoldCase(left[i]);
        const std::wint_t r = FoldCase(right[i]);
        if (l != r) {
            return l < r ? -1 : 1;
        }
    }
    if (left.size() == right.size()) {
        return 0;
    }
    return left.size() < right.size() ? -1 : 1;
}

CNetworkPaths::CNetworkPaths(std::u16string local, std::u16string netbios, std::u16string fqdn,
                             std::u16string ipv4, std::u16string ipv6, std::int32_t pathSelector)
    : Local(std::move(local)),
      Netbios(std::move(netbios)),
      Fqdn(std::move(fqdn)),
      Ipv4(std::move(ipv4)),
      Ipv6(std::move(ipv6)),
      PathSelector(pathSelector) {}

const std::u16string& CNetworkPaths::GetSelectedPath() const {
    switch (PathSelector) {
        case kLocalForm:
            return Local;
        case kNetbiosForm:
            return Netbios;
        case kFqdnForm:
            return Fqdn;
        case kIpv4Form:
            return Ipv4;
        case kIpv6Form:
            return Ipv6;
        default:
            return Ipv4.empty() ? GetNetworkPath() : Ipv4;
    }
}

const std::u16string& CNetworkPaths::GetNetworkPath() const {
    for (const std::u16string* form : {&Fqdn, &Netbios, &Ipv4, &Ipv6}) {
        if (!form->empty()) {
            return *form;
        }
    }
    return Local;
}

const std::u16string& CNetworkPaths::GetCachePath() const {
    for (const std::u16string* form : {&Local, &Ipv4, &Fqdn, &Netbios}) {
        if (!form->empty()) {
            return *form;
        }
    }
    return Ipv6;
}

bool CNetworkPaths::ForEachPathConst(const std::function<bool(const std::u16string&)>& call) const {
    const std::array<std::u16string, 5> copies = {Local, Netbios, Fqdn, Ipv4, Ipv6};
    for (const std::u16string& form : copies) {
        if (!form.empty() && call(form)) {
            return true;
        }
    }
    return false;
}

bool CNetworkPaths::ForEachPath(const std::function<bool(std::u16string&)>& call) {
    for (std::u16string* form : {&Local, &Fqdn, &Netbios, &Ipv4, &Ipv6}) {
        if (!form->empty() && call(*form)) {
            return true;
        }
    }
    return false;
}

bool CNetworkPaths::ForEachPathPair(
    const CNetworkPaths& other,
    const std::function<bool(const std::u16string&, const std::u16string&)>& call) const {
    return call(Local, other.Local) || call(Netbios, other.Netbios) || call(Fqdn, other.Fqdn) ||
           call(Ipv4, other.Ipv4) || call(Ipv6, other.Ipv6);
}

void CNetworkPaths::ApplyToAll(const std::function<void(std::u16string&)>& call) {
    ForEachPath([&call](std::u16string& form) {
        call(form);
        return false;
    });
}

void CNetworkPaths::AddSlash() {
    ApplyToAll([this](std::u16string& form) {
        if (form.back() != Separator) {
            form += Separator;
        }
    });
}

bool CNetworkPaths::operator==(std::u16string_view path) const {
    return ForEachPathConst([this, path](const std::u16string& form) {
        return ComparePathForms(Separator, form, path) == 0;
    });
}

std::strong_ordering CNetworkPaths::operator<=>(const CNetworkPaths& other) const {
    std::optional<int> result;
    ForEachPathPair(other,
                    [this, &result](const std::u16string& mine, const std::u16string& theirs) {
                        if (mine.empty() && theirs.empty()) {
                            return false;
                        }
                        result = ComparePathForms(Separator, mine, theirs);
                        return *result == 0;
                    });
    return OrderingOf(result.value_or(0));
}

CNetworkPaths CNetworkPaths::GetFullRootPaths() const {
    CNetworkPaths roots(*this);
    if (!Local.empty()) {
        auto [root, rest] = SplitRootPath(Local);
        roots.Local = std::move(root);
        for (std::u16string* form : {&roots.Netbios, &roots.Fqdn, &roots.Ipv4, &roots.Ipv6}) {
            if (!form->empty() && form->size() >= rest.size()) {
                form->resize(form->size() - rest.size());
            }
        }
    } else {
        roots.ApplyToAll([](std::u16string& form) { GetPathRoot(form, form); });
    }
    roots.AddSlash();
    return roots;
}

bool CNetworkPaths::IsSamePath(const CNetworkPaths& other) const {
    return Local == other.Local && (*this <=> other) == 0;
}

bool CNetworkPaths::Merge(const CNetworkPaths& other) {
    if (!IsSamePath(other)) {
        return false;
    }
    PathFlags |= other.PathFlags;
    PathSelector = other.PathSelector;
    CacheTag = other.GetCacheTag();
    bool filled = false;
    const std::array<std::pair<std::u16string*, const std::u16string*>, 4> forms = {{
        {&Netbios, &other.Netbios},
        {&Fqdn, &other.Fqdn},
        {&Ipv4, &other.Ipv4},
        {&Ipv6, &other.Ipv6},
    }};
    for (const auto& [mine, theirs] : forms) {
        if (mine->empty() && !theirs->empty()) {
            *mine = *theirs;
            filled = true;
        }
    }
    return filled;
}

bool CNetworkPaths::Serialize(CRawSerializer& out) const {
    for (const std::u16string* form : {&Local, &Netbios, &Fqdn, &Ipv4, &Ipv6}) {
        out.WriteString(*form);
    }
    out.WriteInt32(PathSelector);
    out.WriteUInt32(CacheTag);
    out.WriteUInt32(PathFlags);
    return !out.Failed();
}

bool CNetworkPaths::Deserialize(CRawReader& in) {
    for (std::u16string* form : {&Local, &Netbios, &Fqdn, &Ipv4, &Ipv6}) {
        in.ReadString(*form);
    }
    in.ReadInt32(PathSelector);
    in.ReadUInt32(CacheTag);
    in.ReadUInt32(PathFlags);
    return !in.Failed();
}

void CNetworkPaths::ReadXml(const IXmlNode* node) {
    std::array<std::u16string*, 5> forms = {&Local, &Netbios, &Fqdn, &Ipv4, &Ipv6};
    for (std::size_t i = 0; i < forms.size(); ++i) {
        std::optional<std::string> value;
        if (node != nullptr) {
            value = node->Attribute(platform::Utf16ToUtf8(kXmlKeys[i]));
        }
        *forms[i] = value ? platform::Utf8ToUtf16(*value) : std::u16string();
    }
    std::optional<std::string> selector;
    if (node != nullptr) {
        selector = node->Attribute(platform::Utf16ToUtf8(kSelectorKey));
    }
    PathSelector = selector ? ParseSelector(*selector) : 0;
}

void CNetworkPaths::WriteXml(XmlElementBuilder& element) const {
    const std::array<const std::u16string*, 5> forms = {&Local, &Netbios, &Fqdn, &Ipv4, &Ipv6};
    for (std::size_t i = 0; i < forms.size(); ++i) {
        element.AddAttribute(kXmlKeys[i], forms[i]->c_str());
    }
    element.AddAttribute(kSelectorKey, CLogSerializer::Decimal(PathSelector).c_str());
}

std::u16string CNetworkPaths::DebugLog() const {
    const std::array<std::pair<std::u16string_view, const std::u16string*>, 5> labelled = {{
        {u"Local: ", &Local},
        {u"Netbios: ", &Netbios},
        {u"FQDN: ", &Fqdn},
        {u"Ipv4: ", &Ipv4},
        {u"Ipv6: ", &Ipv6},
    }};
    std::u16string text;
    for (const auto& [label, form] : labelled) {
        if (form->empty()) {
            continue;
        }
        if (!text.empty()) {
            text += u", ";
        }
        text += label;
        text += *form;
    }
    return text;
}

}  // namespace Zelmarik
