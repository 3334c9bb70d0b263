#pragma once
// A calendar time in the layout of the Windows SYSTEMTIME: eight 16-bit fields in this order.

#include <cstdint>

namespace Zelmarik {

struct SystemTime {
    std::uint16_t Year = 0;
    std::uint16_t Month = 0;
    std::uint16_t DayOfWeek = 0;
    std::uint16_t Day = 0;
    std::uint16_t Hour = 0;
    std::uint16_t Minute = 0;
    std::uint16_t Second = 0;
    std::uint16_t Milliseconds = 0;

    bool operator==(const SystemTime&) const = default;
};

}  // namespace Zelmarik
