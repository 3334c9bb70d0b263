#include "Common/DataCategory/DlpCategory.h"

#include <algorithm>
#include <array>

#include "Common/DataCategory/DebugText.h"

namespace Zelmarik {

bool CategoryDefinition::Flags::Serialize(CRawSerializer& out) const {
    for (const bool flag : {Unified, AllData, HasPriority, Flag4, Flag5, Flag6, Flag7}) {
        out.WriteBool(flag);
    }
    return !out.Failed();
}

bool CategoryDefinition::Flags::Deserialize(CRawReader& in) {
    for (bool* flag : {&Unified, &AllData, &HasPriority, &Flag4, &Flag5, &Flag6, &Flag7}) {
        in.ReadBool(*flag);
    }
    return !in.Failed();
}

bool CDlpCategory::FilePropertiesExtensions::Serialize(CRawSerializer& out) const {
    out.WriteUInt32(Selector);
    if (out.WriteUInt32(static_cast<std::uint32_t>(Extensions.size()))) {
        for (const std::u16string& extension : Extensions) {
            if (!out.WriteString(extension)) {
                break;
            }
        }
    }
    return !out.Failed();
}

bool CDlpCategory::FilePropertiesExtensions::Deserialize(CRawReader& in) {
    Extensions.clear();
    std::uint32_t count = 0;
    if (!in.ReadUInt32(Selector) || !in.ReadUInt32(count)) {
        return false;
    }
    // Every string takes at least six bytes, so a hostile count ends when the data does.
    for (std::uint32_t i = 0; i < count; ++i) {
        std::u16string extension;
        if (!in.ReadString(extension)) {
            Extensions.clear();
            return false;
        }
        Extensions.insert(std::move(extension));
    }
    return true;
}

bool CDlpCategory::Serialize(CRawSerializer& out) const {
    Id.Serialize(out);
    out.WriteInt32(Priority);
    out.WriteInt32(Kind);
    out.WriteString(Name);
    out.WriteString(SecondaryName);
    out.WriteUInt64(OpaqueNumber1);
    out.WriteUInt32(OpaqueNumber2);
    out.WriteUInt32(OpaqueNumber3);
    out.WriteUInt64(DisplayNumber);
    out.WriteByte(OpaqueByte);
    out.WriteOptional(Content.get());
    out.WriteOptional(Extensions ? &*Extensions : nullptr);
    Flags.Serialize(out);
    return !out.Failed();
}

bool CDlpCategory::Deserialize(CRawReader& in) {
    Id.Deserialize(in);
    in.ReadInt32(Priority);
    in.ReadInt32(Kind);
    in.ReadString(Name);
    in.ReadString(SecondaryName);
    in.ReadUInt64(OpaqueNumber1);
    in.ReadUInt32(OpaqueNumber2);
    in.ReadUInt32(OpaqueNumber3);
    in.ReadUInt64(DisplayNumber);
    in.ReadByte(OpaqueByte);

    bool hasContent = false;
    if (in.ReadPresence(hasContent)) {
        if (hasContent) {
            Content.GetOrCreate().Deserialize(in);
        } else {
            Content.reset();
        }
    }

    bool hasExtensions = false;
    if (in.ReadPresence(hasExtensions) && hasExtensions) {
        if (!Extensions) {
            Extensions.emplace();
        }
        Extensions->Deserialize(in);
    } else {
        Extensions.reset();
    }

    Flags.Deserialize(in);
    return !in.Failed();
}

std::u16string CDlpCategory::KindText(std::int32_t kind) {
    static constexpr std::array<std::u16string_view, 8> kTexts = {
        u"Unknown", u"Context",        u"Content", u"ThirdParty", u"ProtectedApplication",
        u"AllData", u"FileProperties", u"Tovrinx"};
    if (kind < 0 || kind >= static_cast<std::int32_t>(kTexts.size())) {
        return u"Unknown - Error";
    }
    return std::u16string(kTexts[static_cast<std::size_t>(kind)]);
}

std::u16string CDlpCategory::DebugLog() const {
    std::u16string text = u"[";
    if (Flags.AllData) {
        return text + u"AllData]";
    }
    if (!Name.empty()) {
        text += Name + u": ";
    }
    text += Id.DebugLog();
    if (DisplayNumber != 0) {
        text += u" - " + DecimalText(DisplayNumber);
    }
    if (Kind != 0) {
        text += u" (" + KindText(Kind);
        if (Flags.Unified) {
            text += u" - UNIFIED";
        }
        text += u")";
    }
    if (Priority != kNoPriority && Flags.HasPriority) {
        text += u", P: " + DecimalText(Priority);
    }
    return text + u"]";
}

bool operator<(const CDlpCategory& a, const CDlpCategory& b) {
    if (a.Flags.HasPriority && b.Flags.HasPriority) {
        if (a.Priority != b.Priority) {
            return a.Priority < b.Priority;
        }
    } else if (a.Kind != b.Kind) {
        return a.Kind < b.Kind;
    }
    return std::lexicographical_compare(a.Id.Bytes.begin(), a.Id.Bytes.end(), b.Id.Bytes.begin(),
                                        b.Id.Bytes.end());
}

}  // namespace Zelmarik
