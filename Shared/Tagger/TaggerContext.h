#pragma once
// The state of one file whose tag stream is open: what the tagger found at opening and what it
// must restore at closing.

#include <cstdint>
#include <string>

namespace Zelmarik {

// A handle of the platform layer; 0 before an open, all ones after a failed one.
using TaggerHandle = std::intptr_t;
inline constexpr TaggerHandle kNoTaggerHandle = 0;
inline constexpr TaggerHandle kFailedTaggerHandle = -1;

struct STaggerContext {
    std::u16string File;        // target path in long form
    std::u16string StreamFile;  // File followed by the stream name
    TaggerHandle FileHandle = kNoTaggerHandle;
    TaggerHandle StreamHandle = kNoTaggerHandle;
    std::uint32_t Size = 0;        // stream length at opening plus 16 per category written
    std::uint32_t Attributes = 0;  // attributes found on the read-only path, else 0
    std::uint64_t CreationTime = 0;
    std::uint64_t LastAccessTime = 0;
    std::uint64_t LastWriteTime = 0;
    bool CloseFileHandle = true;
    bool RevertTimes = false;
    bool RevertAttributes = false;
    bool DeleteStreamOnClose = false;
};

// "Type: 1, File: ..., Stream-File: ..., Size: 0, Attributes: 20, flags = RevertTimes: YES, ..."
std::string DescribeTaggerContext(std::int32_t type, const STaggerContext& context);

}  // namespace Zelmarik
