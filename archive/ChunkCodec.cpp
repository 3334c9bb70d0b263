#include "archive/ChunkCodec.h"

#include <zlib.h>

#include <limits>

namespace {

constexpr int kCompressionLevel = 6;

}  // namespace

// The stream and zlib's functions for its direction.
struct ChunkCodec::Stream {
    z_stream z{};
    decltype(&deflateReset) reset = nullptr;
    decltype(&deflate) process = nullptr;
    decltype(&deflateEnd) end = nullptr;
};

ChunkCodec::ChunkCodec(Direction direction) : stream_(std::make_unique<Stream>()) {
    Stream& s = *stream_;
    if (direction == Direction::Deflate) {
        ready_ = deflateInit(&s.z, kCompressionLevel) == Z_OK;
        s.reset = deflateReset;
        s.process = deflate;
        s.end = deflateEnd;
    } else {
        ready_ = inflateInit(&s.z) == Z_OK;
        s.reset = inflateReset;
        s.process = inflate;
        s.end = inflateEnd;
    }
}

ChunkCodec::~ChunkCodec() {
    if (ready_) {
        stream_->end(&stream_->z);
    }
}

bool ChunkCodec::Run(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
                     std::size_t& produced) {
    produced = 0;
    constexpr std::size_t kLimit = std::numeric_limits<uInt>::max();
    if (!ready_ || in.size() > kLimit || out.size() > kLimit ||
        stream_->reset(&stream_->z) != Z_OK) {
        return false;
    }
    z_stream& z = stream_->z;
    z.next_in = const_cast<Bytef*>(in.data());  // zlib's interface is not const-correct
    z.avail_in = static_cast<uInt>(in.size());
    z.next_out = out.data();
    z.avail_out = static_cast<uInt>(out.size());
    if (stream_->process(&z, Z_FINISH) != Z_STREAM_END) {
        return false;
    }
    produced = out.size() - z.avail_out;
    return true;
}
