#pragma once
// One piece of a file in, one complete zlib stream out, and back: the codec of every chunk.
// Engines: libdeflate where the build has it (faster both ways), zlib everywhere. Each reads what
// the other writes, and zlib's uncompress reads every stream written. A piece that would not
// shrink is stored as it is, in the stored blocks of a zlib stream, which costs a copy instead
// of a search for matches that are not there.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

enum class ChunkEngine { Libdeflate, Zlib };

// The engines of this build, the preferred one first.
std::span<const ChunkEngine> ChunkEngines();

class ChunkCodecEngine;

class ChunkCodec {
public:
    enum class Direction { Deflate, Inflate };

    // With the build's preferred engine.
    explicit ChunkCodec(Direction direction);
    // With `engine`, which must be one of ChunkEngines().
    ChunkCodec(Direction direction, ChunkEngine engine);
    ~ChunkCodec();
    ChunkCodec(const ChunkCodec&) = delete;
    ChunkCodec& operator=(const ChunkCodec&) = delete;

    // False when the engine could not set up.
    bool Ready() const { return engine_ != nullptr; }
    // Deflate: `in` becomes one zlib stream (level 6, or stored blocks) in `out`. Inflate: one
    // complete zlib stream at the start of `in` is decompressed into `out`. `produced` is the
    // length written to `out`. False when the result does not fit `out`, and when inflating
    // damaged data or a stream that does not end within `in`. The engine's memory is wiped
    // when it is released: it holds plaintext.
    bool Run(std::span<const std::uint8_t> in, std::span<std::uint8_t> out, std::size_t& produced);

private:
    Direction direction_;
    std::unique_ptr<ChunkCodecEngine> engine_;
};
