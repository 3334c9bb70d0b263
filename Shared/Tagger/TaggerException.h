#pragma once
// The failure of tagging a file: a system error, which file was at fault (Type 1 the stream,
// 2 the target file), and the state of the tagger at that moment.

#include <cstdint>

#include "Common/Common/Exception.h"
#include "Shared/Tagger/TaggerContext.h"

namespace Zelmarik {

class TaggerException : public SystemException {
public:
    static constexpr std::int32_t kStream = 1;
    static constexpr std::int32_t kTargetFile = 2;

    // The text is the formatted message followed by the description of `context` (may be
    // null); unlike the other exceptions it carries no source location.
    TaggerException(const char* file, int line, std::int32_t errorCode, std::int32_t type,
                    const STaggerContext* context, const char* format, ...) ZEL_PRINTF_FORMAT(7, 8);

    std::int32_t Type = 0;
};

}  // namespace Zelmarik
