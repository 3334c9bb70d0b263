#pragma once
// CGuid: a 16-byte identifier in Windows GUID memory order (Data1, Data2 and Data3
// little-endian, then the eight bytes of Data4), with its text form.

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/Common/DebugLog.h"
#include "Common/Common/RawSerializer.h"

namespace Zelmarik {

class CGuid : public virtual ISerializableEx, public virtual IDebugLog {
public:
    static constexpr std::size_t kSize = 16;
    static constexpr std::size_t kTextLength = 36;

    CGuid() = default;
    explicit CGuid(const std::array<std::uint8_t, kSize>& bytes) : Bytes(bytes) {}

    bool Serialize(CRawSerializer& out) const override;
    bool Deserialize(CRawReader& in) override;
    // "01234567-89ab-cdef-0123-456789abcdef": lower-case, no braces.
    std::u16string DebugLog() const override;

    // Parses the 36-character form with hexadecimal digits of either case. A text that is no
    // identifier gives false and leaves `guid` as it was.
    static bool FromString(std::string_view text, CGuid& guid);

    friend bool operator==(const CGuid& a, const CGuid& b) { return a.Bytes == b.Bytes; }

    std::array<std::uint8_t, kSize> Bytes{};
};

}  // namespace Zelmarik
