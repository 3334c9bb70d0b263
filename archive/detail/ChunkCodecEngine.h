#pragma once
// What a compression library gives the chunk codec: one zlib stream per call, in one direction.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "archive/detail/ChunkCodec.h"

class ChunkCodecEngine {
public:
    virtual ~ChunkCodecEngine() = default;
    // As ChunkCodec::Run, in the direction the engine was made for; deflate at level 6.
    virtual bool Run(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
                     std::size_t& produced) = 0;
};

// Null when the library cannot set up (no memory).
std::unique_ptr<ChunkCodecEngine> MakeZlibEngine(ChunkCodec::Direction direction);
std::unique_ptr<ChunkCodecEngine> MakeLibdeflateEngine(ChunkCodec::Direction direction);

inline constexpr int kChunkCompressionLevel = 6;
