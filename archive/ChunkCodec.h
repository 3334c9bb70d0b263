#pragma once
// One zlib stream, reset for every chunk: each piece of a file is compressed into a complete zlib
// stream of its own and each chunk decompresses as one, and setting up a stream per chunk would
// cost more than the chunk.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

class ChunkCodec {
public:
    enum class Direction { Deflate, Inflate };

    explicit ChunkCodec(Direction direction);
    ~ChunkCodec();
    ChunkCodec(const ChunkCodec&) = delete;
    ChunkCodec& operator=(const ChunkCodec&) = delete;

    // False when zlib could not set up its stream.
    bool Ready() const { return ready_; }
    // Deflate: `in` becomes one zlib stream at level 6 in `out`. Inflate: one complete zlib stream
    // in `in` is decompressed into `out`. `produced` is the length written to `out`. False when
    // the result does not fit `out`, and when inflating damaged data or a stream that does not
    // end within `in`.
    bool Run(std::span<const std::uint8_t> in, std::span<std::uint8_t> out, std::size_t& produced);

private:
    struct Stream;
    std::unique_ptr<Stream> stream_;
    bool ready_ = false;
};
