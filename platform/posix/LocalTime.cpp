#include "platform/LocalTime.h"

#include <ctime>

namespace platform {

LocalDateTime CurrentLocalTime() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&now, &parts);
    LocalDateTime local;
    local.year = static_cast<std::uint16_t>(parts.tm_year + 1900);
    local.month = static_cast<std::uint16_t>(parts.tm_mon + 1);
    local.day = static_cast<std::uint16_t>(parts.tm_mday);
    local.hour = static_cast<std::uint16_t>(parts.tm_hour);
    local.minute = static_cast<std::uint16_t>(parts.tm_min);
    local.second = static_cast<std::uint16_t>(parts.tm_sec);
    return local;
}

}  // namespace platform
