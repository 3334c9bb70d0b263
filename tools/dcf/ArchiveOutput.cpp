#include "tools/dcf/ArchiveOutput.h"

namespace dcftool {

void FailWithResult(const std::string& command, const std::string& file, FormatResult result) {
    int code = kExitFailure;
    switch (result) {
        case FORMAT_BAD_KEY:
            code = kExitBadKey;
            break;
        case FORMAT_FAILED:
        case FORMAT_NO_PAYLOAD_ROOM:
            code = kExitDamaged;
            break;
        case FORMAT_WRITE_FAILED:
        case FORMAT_OUTPUT_WRITE_FAILED:
        case FORMAT_TARGET_OPEN_FAILED:
        case FORMAT_SOURCE_OPEN_FAILED:
        case FORMAT_SOURCE_EMPTY:
            code = kExitIo;
            break;
        case FORMAT_CANCELLED:
            code = kExitCancelled;
            break;
        default:
            break;
    }
    FailWith(command, file + ": " + DescribeFormatResult(result), code);
}

}  // namespace dcftool
