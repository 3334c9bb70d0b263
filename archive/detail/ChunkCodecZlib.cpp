// The zlib engine: one stream per direction, reset for every chunk, since setting one up per
// chunk would cost more than the chunk.

#include <zlib.h>

#include <limits>

#include "archive/detail/ChunkCodecEngine.h"
#include "archive/detail/ChunkCodecMemory.h"

namespace {

voidpf AllocateForZlib(voidpf, uInt items, uInt size) {
    if (size != 0 && items > std::numeric_limits<std::size_t>::max() / size) {
        return Z_NULL;
    }
    return AllocateWiped(static_cast<std::size_t>(items) * size);
}

void FreeForZlib(voidpf, voidpf address) {
    FreeWiped(address);
}

class ZlibEngine final : public ChunkCodecEngine {
public:
    explicit ZlibEngine(ChunkCodec::Direction direction) {
        z_.zalloc = AllocateForZlib;
        z_.zfree = FreeForZlib;
        if (direction == ChunkCodec::Direction::Deflate) {
            ready_ = deflateInit(&z_, kChunkCompressionLevel) == Z_OK;
            reset_ = deflateReset;
            process_ = deflate;
            end_ = deflateEnd;
        } else {
            ready_ = inflateInit(&z_) == Z_OK;
            reset_ = inflateReset;
            process_ = inflate;
            end_ = inflateEnd;
        }
    }
    ~ZlibEngine() override {
        if (ready_) {
            end_(&z_);
        }
    }
    ZlibEngine(const ZlibEngine&) = delete;
    ZlibEngine& operator=(const ZlibEngine&) = delete;

    bool Ready() const { return ready_; }

    bool Run(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
             std::size_t& produced) override {
        produced = 0;
        constexpr std::size_t kLimit = std::numeric_limits<uInt>::max();
        if (in.size() > kLimit || out.size() > kLimit || reset_(&z_) != Z_OK) {
            return false;
        }
        z_.next_in = const_cast<Bytef*>(in.data());  // zlib's interface is not const-correct
        z_.avail_in = static_cast<uInt>(in.size());
        z_.next_out = out.data();
        z_.avail_out = static_cast<uInt>(out.size());
        if (process_(&z_, Z_FINISH) != Z_STREAM_END) {
            return false;
        }
        produced = out.size() - z_.avail_out;
        return true;
    }

private:
    z_stream z_{};
    bool ready_ = false;
    decltype(&deflateReset) reset_ = nullptr;
    decltype(&deflate) process_ = nullptr;
    decltype(&deflateEnd) end_ = nullptr;
};

}  // namespace

std::unique_ptr<ChunkCodecEngine> MakeZlibEngine(ChunkCodec::Direction direction) {
    auto engine = std::make_unique<ZlibEngine>(direction);
    if (!engine->Ready()) {
        return nullptr;
    }
    return engine;
}
