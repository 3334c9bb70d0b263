#include "platform/LocalTime.h"

#include <windows.h>

namespace platform {

LocalDateTime CurrentLocalTime() {
    SYSTEMTIME now{};
    GetLocalTime(&now);
    LocalDateTime local;
    local.year = now.wYear;
    local.month = now.wMonth;
    local.day = now.wDay;
    local.hour = now.wHour;
    local.minute = now.wMinute;
    local.second = now.wSecond;
    return local;
}

}  // namespace platform
