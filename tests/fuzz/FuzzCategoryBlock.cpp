// Hostile bytes as a category block, the form in which categories travel in an archive's
// preamble and tag blocks. A block that reads must survive being written and read again: the
// second container writes the same bytes as the first and prints the same debug text. (The
// first writing may differ from the input: a bool byte above 1 and a string's terminator are
// not kept.)

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

#include "Common/DataCategory/CategoryContainer.h"

namespace {

std::u16string DebugText(const Zelmarik::CCategoryContainer& container) {
    std::u16string text;
    for (const Zelmarik::CDlpCategory& category : container.Categories) {
        text += category.DebugLog();
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Zelmarik::CCategoryContainer first;
    if (!Zelmarik::ReadCategoryBlock(std::span<const std::uint8_t>(data, size), first)) {
        return 0;
    }
    const Zelmarik::Blob written = Zelmarik::WriteCategoryBlock(first);
    if (written.Size() == 0) {
        std::abort();  // a container that was read can always be written
    }
    Zelmarik::CCategoryContainer second;
    if (!Zelmarik::ReadCategoryBlock(written.Bytes(), second)) {
        std::abort();
    }
    if (second.Categories.size() != first.Categories.size() ||
        !std::ranges::equal(Zelmarik::WriteCategoryBlock(second).Bytes(), written.Bytes()) ||
        DebugText(second) != DebugText(first)) {
        std::abort();
    }
    return 0;
}
