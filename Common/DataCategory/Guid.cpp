#include "Common/DataCategory/Guid.h"

#include <optional>

namespace Zelmarik {
namespace {

// Memory position of each byte in the order the text shows it: Data1, Data2 and Data3 are
// little-endian numbers printed most significant digit first.
constexpr std::array<std::size_t, CGuid::kSize> kTextOrder = {3, 2, 1,  0,  5,  4,  7,  6,
                                                              8, 9, 10, 11, 12, 13, 14, 15};

// A dash follows these bytes of the text order.
constexpr bool DashAfter(std::size_t textByte) {
    return textByte == 3 || textByte == 5 || textByte == 7 || textByte == 9;
}

std::optional<std::uint8_t> HexValue(char digit) {
    if (digit >= '0' && digit <= '9') {
        return static_cast<std::uint8_t>(digit - '0');
    }
    if (digit >= 'a' && digit <= 'f') {
        return static_cast<std::uint8_t>(digit - 'a' + 10);
    }
    if (digit >= 'A' && digit <= 'F') {
        return static_cast<std::uint8_t>(digit - 'A' + 10);
    }
    return std::nullopt;
}

}  // namespace

bool CGuid::Serialize(CRawSerializer& out) const {
    return out.WriteRaw(Bytes.data(), kSize);
}

bool CGuid::Deserialize(CRawReader& in) {
    return in.ReadRaw(Bytes.data(), kSize);
}

std::u16string CGuid::DebugLog() const {
    static constexpr char16_t kDigits[] = u"0123456789abcdef";
    std::u16string text;
    text.reserve(kTextLength);
    for (std::size_t i = 0; i < kSize; ++i) {
        const std::uint8_t byte = Bytes[kTextOrder[i]];
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0F];
        if (DashAfter(i)) {
            text += u'-';
        }
    }
    return text;
}

bool CGuid::FromString(std::string_view text, CGuid& guid) {
    if (text.size() != kTextLength) {
        return false;
    }
    std::array<std::uint8_t, kSize> bytes{};
    std::size_t at = 0;
    for (std::size_t i = 0; i < kSize; ++i) {
        const auto high = HexValue(text[at]);
        const auto low = HexValue(text[at + 1]);
        if (!high || !low) {
            return false;
        }
        bytes[kTextOrder[i]] = static_cast<std::uint8_t>(*high << 4 | *low);
        at += 2;
        if (DashAfter(i)) {
            if (text[at] != '-') {
                return false;
            }
            ++at;
        }
    }
    guid.Bytes = bytes;
    return true;
}

}  // namespace Zelmarik
