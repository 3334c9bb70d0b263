#pragma once
// One zlib inflate stream, reset for every chunk: a chunk is one complete zlib stream of its
// own, and setting up a stream per chunk would cost more than the chunk.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

class ChunkInflater {
public:
    ChunkInflater();
    ~ChunkInflater();
    ChunkInflater(const ChunkInflater&) = delete;
    ChunkInflater& operator=(const ChunkInflater&) = delete;

    // False when zlib could not set up its stream.
    bool Ready() const { return ready_; }
    // Decompresses one complete zlib stream from `in` into `out`; `produced` is its length.
    // False for damaged data, a stream that does not end within `in`, or output beyond `out`.
    bool Inflate(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
                 std::size_t& produced);

private:
    struct Stream;
    std::unique_ptr<Stream> stream_;
    bool ready_ = false;
};
