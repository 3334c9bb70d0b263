// The chunk codec on 2 KiB pieces: deflate and inflate with each engine of the build, on
// log-like text and on random bytes, the guess that sends incompressible pieces to stored
// blocks, and where the library is installed ISA-L's igzip for comparison. The counter `ratio`
// is the compressed size over the input.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "archive/detail/ChunkCodec.h"
#include "archive/detail/ChunkCodecStored.h"

#ifdef DCF_BENCH_ISAL
#include <isa-l.h>
#endif

namespace {

constexpr std::size_t kPiece = 2048;
constexpr std::size_t kSize = 16u << 20;
constexpr std::size_t kPieces = kSize / kPiece;
constexpr std::size_t kRoom = 2 * kPiece + 64;

const std::vector<std::uint8_t>& Data(bool text) {
    static const auto make = [](bool compressible) {
        std::mt19937 random(7);
        std::vector<std::uint8_t> data;
        data.reserve(kSize + 96);
        while (data.size() < kSize) {
            if (compressible) {
                char line[96];
                const int length = std::snprintf(
                    line, sizeof line, "%012zu %08x user=%u action=%s status=ok\n", data.size(),
                    static_cast<unsigned>(random()), static_cast<unsigned>(random() % 50),
                    random() % 2 != 0 ? "read" : "write");
                data.insert(data.end(), line, line + length);
            } else {
                data.push_back(static_cast<std::uint8_t>(random()));
            }
        }
        data.resize(kSize);
        return data;
    };
    static const std::vector<std::uint8_t> textData = make(true);
    static const std::vector<std::uint8_t> randomData = make(false);
    return text ? textData : randomData;
}

std::span<const std::uint8_t> PieceOf(const std::vector<std::uint8_t>& data, std::size_t i) {
    return std::span(data).subspan(i * kPiece, kPiece);
}

// Every piece of the data as a stream, and their lengths.
struct Streams {
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(kPieces * kRoom);
    std::vector<std::size_t> lengths = std::vector<std::size_t>(kPieces);
    std::span<std::uint8_t> Room(std::size_t i) {
        return std::span(bytes).subspan(i * kRoom, kRoom);
    }
    std::span<const std::uint8_t> Stream(std::size_t i) const {
        return std::span(bytes).subspan(i * kRoom, lengths[i]);
    }
    std::size_t Total() const {
        std::size_t total = 0;
        for (const std::size_t length : lengths) {
            total += length;
        }
        return total;
    }
};

// Every piece deflated by the preferred engine, as the writer does it: the input of the inflate
// benchmarks.
Streams DeflatedWithTheBuildsEngine(const std::vector<std::uint8_t>& data) {
    Streams streams;
    ChunkCodec deflater(ChunkCodec::Direction::Deflate);
    for (std::size_t i = 0; i < kPieces; ++i) {
        deflater.Run(PieceOf(data, i), streams.Room(i), streams.lengths[i]);
    }
    return streams;
}

ChunkEngine EngineOf(const benchmark::State& state) {
    return static_cast<ChunkEngine>(state.range(0));
}

void Label(benchmark::State& state, bool text) {
    state.SetLabel(std::string(EngineOf(state) == ChunkEngine::Zlib ? "zlib" : "libdeflate") +
                   (text ? ", text" : ", random"));
}

void Deflate(benchmark::State& state, bool text) {
    const auto& data = Data(text);
    ChunkCodec codec(ChunkCodec::Direction::Deflate, EngineOf(state));
    Streams streams;
    for (auto _ : state) {
        for (std::size_t i = 0; i < kPieces; ++i) {
            codec.Run(PieceOf(data, i), streams.Room(i), streams.lengths[i]);
        }
    }
    Label(state, text);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSize));
    state.counters["ratio"] = static_cast<double>(streams.Total()) / kSize;
}

void Inflate(benchmark::State& state, bool text) {
    const Streams streams = DeflatedWithTheBuildsEngine(Data(text));
    ChunkCodec codec(ChunkCodec::Direction::Inflate, EngineOf(state));
    std::vector<std::uint8_t> out(1280 * 16);
    for (auto _ : state) {
        for (std::size_t i = 0; i < kPieces; ++i) {
            std::size_t produced = 0;
            if (!codec.Run(streams.Stream(i), out, produced)) {
                state.SkipWithError("inflate failed");
                return;
            }
        }
    }
    Label(state, text);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSize));
}

void EachEngine(benchmark::internal::Benchmark* benchmark) {
    for (const ChunkEngine engine : ChunkEngines()) {
        benchmark->Arg(static_cast<int>(engine));
    }
    benchmark->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(Deflate, text, true)->Apply(EachEngine);
BENCHMARK_CAPTURE(Deflate, random, false)->Apply(EachEngine);
BENCHMARK_CAPTURE(Inflate, text, true)->Apply(EachEngine);
BENCHMARK_CAPTURE(Inflate, random, false)->Apply(EachEngine);

void GuessIncompressible(benchmark::State& state, bool text) {
    const auto& data = Data(text);
    std::size_t stored = 0;
    for (auto _ : state) {
        stored = 0;
        for (std::size_t i = 0; i < kPieces; ++i) {
            stored += LooksIncompressible(PieceOf(data, i)) ? 1 : 0;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSize));
    state.counters["stored"] = static_cast<double>(stored) / kPieces;
}
BENCHMARK_CAPTURE(GuessIncompressible, text, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(GuessIncompressible, random, false)->Unit(benchmark::kMillisecond);

#ifdef DCF_BENCH_ISAL
// ISA-L's igzip at the level of the argument (1 to 3; it has no higher), as zlib streams.
void IsalDeflate(benchmark::State& state, bool text) {
    const auto& data = Data(text);
    const auto level = static_cast<std::uint32_t>(state.range(0));
    std::vector<std::uint8_t> levelBuffer(ISAL_DEF_LVL3_DEFAULT);
    Streams streams;
    isal_zstream stream;
    for (auto _ : state) {
        for (std::size_t i = 0; i < kPieces; ++i) {
            isal_deflate_stateless_init(&stream);
            stream.level = level;
            stream.level_buf = levelBuffer.data();
            stream.level_buf_size = static_cast<std::uint32_t>(levelBuffer.size());
            stream.gzip_flag = IGZIP_ZLIB;
            stream.end_of_stream = 1;
            stream.next_in = const_cast<std::uint8_t*>(PieceOf(data, i).data());
            stream.avail_in = kPiece;
            stream.next_out = streams.Room(i).data();
            stream.avail_out = kRoom;
            isal_deflate_stateless(&stream);
            streams.lengths[i] = kRoom - stream.avail_out;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSize));
    state.counters["ratio"] = static_cast<double>(streams.Total()) / kSize;
}
BENCHMARK_CAPTURE(IsalDeflate, text, true)->DenseRange(1, 3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IsalDeflate, random, false)->DenseRange(1, 3)->Unit(benchmark::kMillisecond);

void IsalInflate(benchmark::State& state, bool text) {
    const Streams streams = DeflatedWithTheBuildsEngine(Data(text));
    std::vector<std::uint8_t> out(1280 * 16);
    inflate_state inflater;
    for (auto _ : state) {
        for (std::size_t i = 0; i < kPieces; ++i) {
            isal_inflate_init(&inflater);
            inflater.crc_flag = ISAL_ZLIB;
            inflater.next_in = const_cast<std::uint8_t*>(streams.Stream(i).data());
            inflater.avail_in = static_cast<std::uint32_t>(streams.lengths[i]);
            inflater.next_out = out.data();
            inflater.avail_out = static_cast<std::uint32_t>(out.size());
            if (isal_inflate_stateless(&inflater) != ISAL_DECOMP_OK) {
                state.SkipWithError("inflate failed");
                return;
            }
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSize));
}
BENCHMARK_CAPTURE(IsalInflate, text, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(IsalInflate, random, false)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
