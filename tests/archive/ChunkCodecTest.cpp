// The chunk codec on every engine of the build: each engine reads what each writes, zlib's own
// uncompress reads every stream, incompressible pieces are stored, and damage is refused.
#include <gtest/gtest.h>
#include <zlib.h>

#include <optional>
#include <string>
#include <vector>

#include "archive/detail/ChunkCodec.h"
#include "tests/archive/ImageBuilder.h"

namespace {

using tests::Bytes;

constexpr std::size_t kPiece = 2048;
constexpr std::size_t kStoredOverhead = 2 + 5 + 4;  // zlib header, block header, checksum

Bytes Text(std::size_t size) {
    Bytes bytes;
    for (std::size_t line = 0; bytes.size() < size; ++line) {
        const std::string text =
            std::to_string(line * 7919) + " user=" + std::to_string(line % 13) + " status=ok\n";
        bytes.insert(bytes.end(), text.begin(), text.end());
    }
    bytes.resize(size);
    return bytes;
}

struct Piece {
    std::string name;
    Bytes bytes;
    bool stored;  // whether the codec should store it as it is
};

std::vector<Piece> Pieces() {
    // The byte values of noise, but its last quarter repeats the first: deflate saves that.
    Bytes noise = tests::Noise(kPiece * 3 / 4, 3);
    const Bytes head(noise.begin(), noise.begin() + kPiece / 4);
    noise.insert(noise.end(), head.begin(), head.end());
    return {
        {"text", Text(kPiece), false},
        {"noise", tests::Noise(kPiece, 1), true},
        {"short noise", tests::Noise(100, 2), false},
        {"noise and a repeat", noise, false},
    };
}

std::string EngineName(ChunkEngine engine) {
    return engine == ChunkEngine::Zlib ? "zlib" : "libdeflate";
}

Bytes Deflated(ChunkEngine engine, const Bytes& piece) {
    ChunkCodec codec(ChunkCodec::Direction::Deflate, engine);
    EXPECT_TRUE(codec.Ready());
    Bytes out(2 * kPiece + 64);
    std::size_t produced = 0;
    EXPECT_TRUE(codec.Run(piece, out, produced));
    out.resize(produced);
    return out;
}

// What the engine's inflate makes of `stream`; nothing when it refuses.
std::optional<Bytes> Inflated(ChunkEngine engine, const Bytes& stream, std::size_t room) {
    ChunkCodec codec(ChunkCodec::Direction::Inflate, engine);
    EXPECT_TRUE(codec.Ready());
    Bytes out(room);
    std::size_t produced = 0;
    if (!codec.Run(stream, out, produced)) {
        EXPECT_EQ(produced, 0u);
        return std::nullopt;
    }
    out.resize(produced);
    return out;
}

TEST(ChunkCodec, EveryEngineReadsEveryStreamAndZlibsUncompressDoes) {
    for (const ChunkEngine writer : ChunkEngines()) {
        for (const Piece& piece : Pieces()) {
            SCOPED_TRACE(EngineName(writer) + ", " + piece.name);
            const Bytes stream = Deflated(writer, piece.bytes);
            Bytes byZlib(kPiece);
            uLongf length = byZlib.size();
            ASSERT_EQ(uncompress(byZlib.data(), &length, stream.data(), stream.size()), Z_OK);
            byZlib.resize(length);
            EXPECT_EQ(byZlib, piece.bytes);
            for (const ChunkEngine reader : ChunkEngines()) {
                EXPECT_EQ(Inflated(reader, stream, kPiece), piece.bytes) << EngineName(reader);
            }
            if (piece.stored) {
                EXPECT_EQ(stream.size(), piece.bytes.size() + kStoredOverhead);
            } else if (piece.bytes.size() == kPiece) {
                EXPECT_LT(stream.size(), kPiece);  // deflated: what shrinks is not stored
            }
        }
    }
}

TEST(ChunkCodec, TextStaysWithinTwoPercentOfZlibAtLevelSix) {
    const Bytes text = Text(kPiece);
    const std::size_t zlibSize = tests::Compress(text).size();
    for (const ChunkEngine engine : ChunkEngines()) {
        EXPECT_LE(Deflated(engine, text).size(), zlibSize * 102 / 100) << EngineName(engine);
    }
}

TEST(ChunkCodec, ResultsThatDoNotFitAndDamagedStreamsAreRefused) {
    const Bytes text = Text(kPiece);
    const Bytes noise = tests::Noise(kPiece, 5);
    for (const ChunkEngine engine : ChunkEngines()) {
        SCOPED_TRACE(EngineName(engine));
        // Deflate into too little room, on the deflated and on the stored way.
        for (const Bytes* piece : {&text, &noise}) {
            ChunkCodec deflater(ChunkCodec::Direction::Deflate, engine);
            Bytes small(100);
            std::size_t produced = 1;
            EXPECT_FALSE(deflater.Run(*piece, small, produced));
            EXPECT_EQ(produced, 0u);
        }
        for (const Bytes* piece : {&text, &noise}) {
            const Bytes stream = Deflated(engine, *piece);
            EXPECT_FALSE(Inflated(engine, stream, kPiece - 1)) << "no room for the last byte";
            EXPECT_FALSE(Inflated(engine, Bytes(stream.begin(), stream.end() - 5), kPiece))
                << "cut short";
            Bytes damaged = stream;
            damaged.back() ^= 1;  // the checksum
            EXPECT_FALSE(Inflated(engine, damaged, kPiece));
            EXPECT_FALSE(Inflated(engine, tests::Noise(700, 9), kPiece)) << "no zlib stream";
            // A codec goes on after a refusal.
            EXPECT_EQ(Inflated(engine, stream, kPiece), *piece);
        }
    }
}

}  // namespace
