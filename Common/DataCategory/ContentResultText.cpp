// The debug lines of the content result tree.

#include <array>

#include "Common/DataCategory/ContentResult.h"
#include "Common/DataCategory/DebugText.h"

namespace Zelmarik {
namespace {

// Each element of a long list stands on its own line.
constexpr std::u16string_view kLineSeparator = u", \n";

}  // namespace

using R = CContentResult;

std::u16string R::CacheInfo::StateText(std::int32_t state) {
    static constexpr std::array<std::u16string_view, 6> kTexts = {
        u"NotInitialized", u"Miss", u"L1Hit", u"L2Hit", u"ChildFullHit", u"ChildPartialHit"};
    // The states start at -1.
    const std::int64_t index = static_cast<std::int64_t>(state) + 1;
    if (index < 0 || index >= static_cast<std::int64_t>(kTexts.size())) {
        return {};
    }
    return std::u16string(kTexts[static_cast<std::size_t>(index)]);
}

std::u16string R::CacheInfo::DebugLog() const {
    return u"Zelmarik: " + StateText(ZelmarikState) + u", Metadata: " + StateText(MetadataState) +
           u", Tovrinx: " + StateText(TovrinxState);
}

std::u16string R::ElementMatch::DebugLog() const {
    return First + u", " + Second + u", count: " + DecimalText(Count);
}

std::u16string R::ElementResult::KindText(std::uint32_t kind) {
    static constexpr std::array<std::u16string_view, 10> kTexts = {
        u"NotInitialized", u"Algorithm", u"Keyword", u"Regex",    u"Dictionary",
        u"AppCategory",    u"FilePath",  u"Website", u"FileType", u"Metadata"};
    return kind < kTexts.size() ? std::u16string(kTexts[kind]) : std::u16string();
}

std::u16string R::ElementResult::DebugLog() const {
    return u"Kind: " + KindText(Kind) + u"\n\tMatches: " + JoinDebugLogs(Matches, u", ") +
           u"\n\tTotal count: " + DecimalText(TotalCount);
}

std::u16string R::Definition::DebugLog() const {
    return u"Id: " + DecimalText(Id) + u", Name: " + Name + u", Elements: " +
           JoinDebugLogs(Elements, kLineSeparator) + u", ContentHitCount: " +
           DecimalText(ContentHitCount);
}

std::u16string R::MetadataProperty::DebugLog() const {
    return u"Name: " + Name + u", Value: " + Value;
}

std::u16string R::FileResult::DebugLog() const {
    static constexpr std::u16string_view kNone = u"-none-";
    return u"Relative name: " + RelativeName + u", Definitions: \r\n" +
           JoinDebugLogs(Definitions, kLineSeparator, kNone) + u", FoundMetadata: \r\n" +
           JoinDebugLogs(FoundMetadata, kLineSeparator, kNone);
}

}  // namespace Zelmarik
