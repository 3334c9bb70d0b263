#include "Common/RPCCommonLib/LogSerializer.h"

#include <string>

namespace Zelmarik {

std::u16string CLogSerializer::Decimal(std::int64_t value) {
    const std::string digits = std::to_string(value);
    return std::u16string(digits.begin(), digits.end());
}

}  // namespace Zelmarik
