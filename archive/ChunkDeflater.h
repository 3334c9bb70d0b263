#pragma once
// One zlib deflate stream, reset for every piece: each piece of a file becomes a complete zlib
// stream of its own, and setting up a stream per piece would cost more than the piece.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

class ChunkDeflater {
public:
    ChunkDeflater();
    ~ChunkDeflater();
    ChunkDeflater(const ChunkDeflater&) = delete;
    ChunkDeflater& operator=(const ChunkDeflater&) = delete;

    // False when zlib could not set up its stream.
    bool Ready() const { return ready_; }
    // Compresses `in` into one zlib stream at level 6 in `out`; `produced` is its length. False
    // when the stream does not fit `out`.
    bool Deflate(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
                 std::size_t& produced);

private:
    struct Stream;
    std::unique_ptr<Stream> stream_;
    bool ready_ = false;
};
