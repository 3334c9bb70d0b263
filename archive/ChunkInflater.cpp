#include "archive/ChunkInflater.h"

#include <zlib.h>

#include <limits>

struct ChunkInflater::Stream {
    z_stream z{};
};

ChunkInflater::ChunkInflater() : stream_(std::make_unique<Stream>()) {
    ready_ = inflateInit(&stream_->z) == Z_OK;
}

ChunkInflater::~ChunkInflater() {
    if (ready_) {
        inflateEnd(&stream_->z);
    }
}

bool ChunkInflater::Inflate(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
                            std::size_t& produced) {
    produced = 0;
    constexpr std::size_t kLimit = std::numeric_limits<uInt>::max();
    if (!ready_ || in.size() > kLimit || out.size() > kLimit || inflateReset(&stream_->z) != Z_OK) {
        return false;
    }
    z_stream& z = stream_->z;
    z.next_in = const_cast<Bytef*>(in.data());  // zlib's interface is not const-correct
    z.avail_in = static_cast<uInt>(in.size());
    z.next_out = out.data();
    z.avail_out = static_cast<uInt>(out.size());
    if (inflate(&z, Z_FINISH) != Z_STREAM_END) {
        return false;
    }
    produced = out.size() - z.avail_out;
    return true;
}
