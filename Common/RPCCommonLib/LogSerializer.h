#pragma once
// Shared routines that print containers of objects with a DebugLog.

#include <cstdint>
#include <string>
#include <string_view>

#include "Common/Common/Concurrent.h"

namespace Zelmarik {

class CLogSerializer {
public:
    // The DebugLog of each element in order, joined by ", " and a line feed; `fallback` for an
    // empty container. The container is read under its lock until the text is done.
    template <class Container>
    static std::u16string CommaContainerDebugLog(const Concurrent::ResourceOwner<Container>& items,
                                                 std::u16string_view fallback) {
        const Concurrent::ConcurrentResourceHolder<Container> held(
            items, "Common\\RPCCommonLib\\LogSerializer",
            "Zelmarik::CLogSerializer::CommaContainerDebugLog", __LINE__);
        if (held->empty()) {
            return std::u16string(fallback);
        }
        std::u16string text;
        bool first = true;
        for (const auto& item : held) {
            if (!first) {
                text += kSeparator;
            }
            first = false;
            text += item.DebugLog();
        }
        return text;
    }

    // A number in decimal, as the debug texts print it.
    static std::u16string Decimal(std::int64_t value);

    static constexpr std::u16string_view kSeparator = u", \n";
};

}  // namespace Zelmarik
