// The libdeflate engine: whole-buffer compression, which suits pieces that are each a stream of
// their own. It writes valid zlib streams, though not zlib's exact bytes.

#include <libdeflate.h>

#include <mutex>

#include "archive/detail/ChunkCodecEngine.h"
#include "archive/detail/ChunkCodecMemory.h"

namespace {

// libdeflate's allocator is process-wide; it is set before the first compressor exists, so
// that every block it frees came from it.
void UseWipedMemory() {
    static std::once_flag once;
    std::call_once(once, [] { libdeflate_set_memory_allocator(AllocateWiped, FreeWiped); });
}

class LibdeflateCompressor final : public ChunkCodecEngine {
public:
    LibdeflateCompressor() : compressor_(libdeflate_alloc_compressor(kChunkCompressionLevel)) {}
    ~LibdeflateCompressor() override { libdeflate_free_compressor(compressor_); }
    LibdeflateCompressor(const LibdeflateCompressor&) = delete;
    LibdeflateCompressor& operator=(const LibdeflateCompressor&) = delete;

    bool Ready() const { return compressor_ != nullptr; }

    bool Run(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
             std::size_t& produced) override {
        // 0 means that the stream did not fit.
        produced =
            libdeflate_zlib_compress(compressor_, in.data(), in.size(), out.data(), out.size());
        return produced != 0;
    }

private:
    libdeflate_compressor* compressor_;
};

class LibdeflateDecompressor final : public ChunkCodecEngine {
public:
    LibdeflateDecompressor() : decompressor_(libdeflate_alloc_decompressor()) {}
    ~LibdeflateDecompressor() override { libdeflate_free_decompressor(decompressor_); }
    LibdeflateDecompressor(const LibdeflateDecompressor&) = delete;
    LibdeflateDecompressor& operator=(const LibdeflateDecompressor&) = delete;

    bool Ready() const { return decompressor_ != nullptr; }

    bool Run(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
             std::size_t& produced) override {
        produced = 0;
        std::size_t length = 0;
        if (libdeflate_zlib_decompress(decompressor_, in.data(), in.size(), out.data(), out.size(),
                                       &length) != LIBDEFLATE_SUCCESS) {
            return false;
        }
        produced = length;
        return true;
    }

private:
    libdeflate_decompressor* decompressor_;
};

template <typename Engine>
std::unique_ptr<ChunkCodecEngine> MakeReady() {
    auto engine = std::make_unique<Engine>();
    if (!engine->Ready()) {
        return nullptr;
    }
    return engine;
}

}  // namespace

std::unique_ptr<ChunkCodecEngine> MakeLibdeflateEngine(ChunkCodec::Direction direction) {
    UseWipedMemory();
    return direction == ChunkCodec::Direction::Deflate ? MakeReady<LibdeflateCompressor>()
                                                       : MakeReady<LibdeflateDecompressor>();
}
