#include "archive/ChunkDeflater.h"

#include <zlib.h>

#include <limits>

namespace {

constexpr int kCompressionLevel = 6;

}  // namespace

struct ChunkDeflater::Stream {
    z_stream z{};
};

ChunkDeflater::ChunkDeflater() : stream_(std::make_unique<Stream>()) {
    ready_ = deflateInit(&stream_->z, kCompressionLevel) == Z_OK;
}

ChunkDeflater::~ChunkDeflater() {
    if (ready_) {
        deflateEnd(&stream_->z);
    }
}

bool ChunkDeflater::Deflate(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
                            std::size_t& produced) {
    produced = 0;
    constexpr std::size_t kLimit = std::numeric_limits<uInt>::max();
    if (!ready_ || in.size() > kLimit || out.size() > kLimit || deflateReset(&stream_->z) != Z_OK) {
        return false;
    }
    z_stream& z = stream_->z;
    z.next_in = const_cast<Bytef*>(in.data());  // zlib's interface is not const-correct
    z.avail_in = static_cast<uInt>(in.size());
    z.next_out = out.data();
    z.avail_out = static_cast<uInt>(out.size());
    if (deflate(&z, Z_FINISH) != Z_STREAM_END) {
        return false;
    }
    produced = out.size() - z.avail_out;
    return true;
}
