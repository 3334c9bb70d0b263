#pragma once
// The wall clock in the local time zone.

#include <cstdint>

namespace platform {

struct LocalDateTime {
    std::uint16_t year = 0;
    std::uint16_t month = 0;  // 1 to 12
    std::uint16_t day = 0;    // 1 to 31
    std::uint16_t hour = 0;
    std::uint16_t minute = 0;
    std::uint16_t second = 0;
};

LocalDateTime CurrentLocalTime();

}  // namespace platform
