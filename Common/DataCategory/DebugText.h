#pragma once
// Pieces of the debug lines: decimal numbers and lists of printable objects.

#include <concepts>
#include <string>
#include <string_view>

namespace Zelmarik {

template <std::integral T>
std::u16string DecimalText(T value) {
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

// The DebugLog of each element, `separator` between them; `empty` for an empty list.
template <typename Sequence>
std::u16string JoinDebugLogs(const Sequence& items, std::u16string_view separator,
                             std::u16string_view empty = {}) {
    if (items.empty()) {
        return std::u16string(empty);
    }
    std::u16string text;
    bool first = true;
    for (const auto& item : items) {
        if (!first) {
            text += separator;
        }
        first = false;
        text += item.DebugLog();
    }
    return text;
}

}  // namespace Zelmarik
