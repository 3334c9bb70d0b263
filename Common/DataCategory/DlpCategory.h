#pragma once
// CDlpCategory: one data category, an identifier with what the classification knew about it.
// Only the identifier matters to extraction; every other field travels through unchanged.

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "Common/Common/DebugLog.h"
#include "Common/Common/RawSerializer.h"
#include "Common/DataCategory/ContentResult.h"
#include "Common/DataCategory/CopyingPtr.h"
#include "Common/DataCategory/Guid.h"

namespace Zelmarik {

namespace CategoryDefinition {

// Seven one-byte bools, stored in this order.
class Flags : public virtual ISerializableEx {
public:
    bool Serialize(CRawSerializer& out) const override;
    bool Deserialize(CRawReader& in) override;

    bool Unified = false;
    // The catch-all category.
    bool AllData = false;
    // `Priority` counts.
    bool HasPriority = false;
    bool Flag4 = false;
    bool Flag5 = false;
    bool Flag6 = false;
    bool Flag7 = false;
};

}  // namespace CategoryDefinition

class CDlpCategory : public virtual ISerializableEx, public virtual IDebugLog {
public:
    // Ordered by 16-bit units, lower unit first, then the shorter string: ".Doc" and ".doc" are
    // two entries.
    using ExtensionSet = std::set<std::u16string>;

    class FilePropertiesExtensions : public virtual ISerializableEx {
    public:
        // Declared so that the class is default-constructible inside CDlpCategory already,
        // where clang would not yet see the member initializers.
        FilePropertiesExtensions() {}

        bool Serialize(CRawSerializer& out) const override;
        bool Deserialize(CRawReader& in) override;

        std::uint32_t Selector = 0;
        ExtensionSet Extensions;
    };

    static constexpr std::int32_t kNoPriority = 0x7FFFFFFF;

    bool Serialize(CRawSerializer& out) const override;
    bool Deserialize(CRawReader& in) override;
    // "[Payroll: 01234567-89ab-cdef-0123-456789abcdef - 12 (Content - UNIFIED), P: 3]".
    std::u16string DebugLog() const override;

    // "Unknown", "Context", ...; "Unknown - Error" for a value outside the kinds.
    static std::u16string KindText(std::int32_t kind);

    // By priority when both have one, else by kind; then by the identifier's bytes.
    friend bool operator<(const CDlpCategory& a, const CDlpCategory& b);

    CGuid Id;
    std::int32_t Kind = 0;
    std::int32_t Priority = kNoPriority;
    std::u16string Name;
    std::u16string SecondaryName;
    std::uint8_t OpaqueByte = 0;
    // Never stored; seen by the archive writer.
    bool Marked = false;
    std::uint64_t OpaqueNumber1 = 0;
    std::uint32_t OpaqueNumber2 = 0;
    std::uint32_t OpaqueNumber3 = 0;
    CopyingPtr<CContentResult> Content;
    std::uint64_t DisplayNumber = 0;
    std::optional<FilePropertiesExtensions> Extensions;
    CategoryDefinition::Flags Flags;
};

}  // namespace Zelmarik
