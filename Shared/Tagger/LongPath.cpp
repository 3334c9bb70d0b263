#include "Shared/Tagger/LongPath.h"

#include <string_view>

namespace Zelmarik {
namespace {

constexpr std::u16string_view kLongPrefix = u"\\\\?\\";
constexpr std::u16string_view kUncLongPrefix = u"\\\\?\\UNC";
constexpr std::u16string_view kUncPrefix = u"\\\\";

}  // namespace

std::u16string ToLongPath(const char16_t* path) {
    const std::u16string_view text = path == nullptr ? std::u16string_view() : path;
    if (text.starts_with(kLongPrefix)) {
        return std::u16string(text);
    }
    if (text.starts_with(kUncPrefix)) {
        // Keeps one of the two backslashes: "\\srv" -> "\\?\UNC\srv".
        return std::u16string(kUncLongPrefix).append(text.substr(1));
    }
    return std::u16string(kLongPrefix).append(text);
}

}  // namespace Zelmarik
