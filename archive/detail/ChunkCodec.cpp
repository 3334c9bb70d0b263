#include "archive/detail/ChunkCodec.h"

#include "archive/detail/ChunkCodecEngine.h"
#include "archive/detail/ChunkCodecStored.h"

namespace {

#ifdef DCF_HAVE_LIBDEFLATE
constexpr ChunkEngine kEngines[] = {ChunkEngine::Libdeflate, ChunkEngine::Zlib};
#else
constexpr ChunkEngine kEngines[] = {ChunkEngine::Zlib};
#endif

std::unique_ptr<ChunkCodecEngine> MakeEngine(ChunkCodec::Direction direction, ChunkEngine engine) {
#ifdef DCF_HAVE_LIBDEFLATE
    if (engine == ChunkEngine::Libdeflate) {
        return MakeLibdeflateEngine(direction);
    }
#endif
    return engine == ChunkEngine::Zlib ? MakeZlibEngine(direction) : nullptr;
}

}  // namespace

std::span<const ChunkEngine> ChunkEngines() {
    return kEngines;
}

ChunkCodec::ChunkCodec(Direction direction) : ChunkCodec(direction, kEngines[0]) {}

ChunkCodec::ChunkCodec(Direction direction, ChunkEngine engine)
    : direction_(direction), engine_(MakeEngine(direction, engine)) {}

ChunkCodec::~ChunkCodec() = default;

bool ChunkCodec::Run(std::span<const std::uint8_t> in, std::span<std::uint8_t> out,
                     std::size_t& produced) {
    produced = 0;
    if (!engine_) {
        return false;
    }
    if (direction_ == Direction::Deflate && LooksIncompressible(in)) {
        return WriteStoredStream(in, out, produced);
    }
    return engine_->Run(in, out, produced);
}
