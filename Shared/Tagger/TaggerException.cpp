#include "Shared/Tagger/TaggerException.h"

#include <cstdarg>
#include <cstdio>

#include "platform/Text.h"

namespace Zelmarik {
namespace {

const char* YesNo(bool value) {
    return value ? "YES" : "NO";
}

}  // namespace

std::string DescribeTaggerContext(std::int32_t type, const STaggerContext& context) {
    char attributes[16];
    std::snprintf(attributes, sizeof attributes, "%x", context.Attributes);
    return ", \r\nType: " + std::to_string(type) +
           ", File: " + platform::Utf16ToUtf8(context.File) +
           ", Stream-File: " + platform::Utf16ToUtf8(context.StreamFile) +
           ", Size: " + std::to_string(context.Size) + ", Attributes: " + attributes +
           ", flags = RevertTimes: " + YesNo(context.RevertTimes) +
           ", RevertAttributes: " + YesNo(context.RevertAttributes) +
           ", DeleteStreamOnClose: " + YesNo(context.DeleteStreamOnClose);
}

TaggerException::TaggerException(const char* file, int line, std::int32_t errorCode,
                                 std::int32_t type, const STaggerContext* context,
                                 const char* format, ...)
    : SystemException(file, line, errorCode), Type(type) {
    va_list args;
    va_start(args, format);
    Text = FormatMessageText(format, args);
    va_end(args);
    if (context != nullptr) {
        Text += DescribeTaggerContext(type, *context);
    }
}

}  // namespace Zelmarik
