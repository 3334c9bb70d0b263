// Writing archives: the fixed cost of sealing a key block (two forced slow polls of the random
// pool, the key derivation, the RSA slot), and the data stream of a file, compressible or not,
// piece by piece through deflate on one or two workers and the chunk chain into a discarding
// target, and that stream read back with one or two inflate workers.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "archive/detail/BufferedIo.h"
#include "archive/detail/DataStream.h"
#include "archive/detail/DataStreamWriter.h"
#include "archive/detail/KeyBlockSealing.h"
#include "crypto/RandomPool.h"
#include "platform/File.h"

namespace {

namespace fs = std::filesystem;

void SealKeyBlockWithRandomFiller(benchmark::State& state) {
    const std::array<std::uint8_t, 6> password = {'s', 'e', 'c', 'r', 'e', 't'};
    for (auto _ : state) {
        // As the writer does: the pool runs around the sealing only.
        crypto::RandomStart();
        dcf::KeyBlock block{};
        KeyContextPtr keys;
        if (SealKeyBlock(block, password, nullptr, keys) != kKeyBlockOpened) {
            state.SkipWithError("sealing failed");
        }
        crypto::RandomStop();
        benchmark::DoNotOptimize(block.data());
    }
}
BENCHMARK(SealKeyBlockWithRandomFiller)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

// A file of `size` bytes of log-like text (compressible) or of random bytes, made once.
fs::path SourceFile(bool compressible, std::size_t size) {
    const fs::path path = fs::temp_directory_path() /
                          (compressible ? "dcf-create-bench-text" : "dcf-create-bench-random");
    if (fs::exists(path) && fs::file_size(path) == size) {
        return path;
    }
    std::mt19937 random(7);
    std::string data;
    data.reserve(size);
    while (data.size() < size) {
        if (compressible) {
            char line[96];
            std::snprintf(line, sizeof line, "%012zu %08x user=%u action=%s status=ok\n",
                          data.size(), static_cast<unsigned>(random()), random() % 50,
                          random() % 2 != 0 ? "read" : "write");
            data += line;
        } else {
            data.push_back(static_cast<char>(random()));
        }
    }
    data.resize(size);
    std::ofstream(path, std::ios::binary).write(data.data(), static_cast<std::streamsize>(size));
    return path;
}

void DataStream(benchmark::State& state, bool compressible) {
    const std::size_t size = 32u << 20;
    const std::u16string source = SourceFile(compressible, size).u16string();
    KeyContextPtr keys = AllocateKeyContext();
    std::array<std::uint8_t, 256> keyArea{};
    keyArea.fill(0x5A);
    LoadKeys(*keys, 1, keyArea);
    platform::File sink;
    if (sink.Open(u"/dev/null", platform::OpenMode::Append) != platform::kErrorSuccess) {
        state.SkipWithError("no /dev/null");
        return;
    }
    BufferedWriter target(sink);
    DCCArchiveUserSettings settings;
    const auto workers = static_cast<unsigned>(state.range(0));
    DataStreamWriter writer(target, *keys, settings, size, workers);
    for (auto _ : state) {
        platform::File file;
        file.Open(source, platform::OpenMode::Read);
        if (writer.WriteDataStream(file, size, 0) != FORMAT_OK || !target.Flush()) {
            state.SkipWithError("the stream failed");
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}
// The argument is the number of deflate workers.
BENCHMARK_CAPTURE(DataStream, compressible, true)
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(DataStream, random, false)
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The compressible stream written once, then read back (inflated, its bytes dropped) by a reader
// with the given number of inflate workers.
void ReadBack(benchmark::State& state) {
    const std::size_t size = 32u << 20;
    KeyContextPtr keys = AllocateKeyContext();
    std::array<std::uint8_t, 256> keyArea{};
    keyArea.fill(0x5A);
    LoadKeys(*keys, 1, keyArea);
    const fs::path stream = fs::temp_directory_path() / "dcf-create-bench-stream";
    DCCArchiveUserSettings settings;
    {
        platform::File sink;
        platform::File file;
        if (sink.Open(stream.u16string(), platform::OpenMode::CreateAlways) !=
                platform::kErrorSuccess ||
            file.Open(SourceFile(true, size).u16string(), platform::OpenMode::Read) !=
                platform::kErrorSuccess) {
            state.SkipWithError("no stream file");
            return;
        }
        BufferedWriter target(sink);
        DataStreamWriter writer(target, *keys, settings, size, 2);
        if (writer.WriteDataStream(file, size, 0) != FORMAT_OK || !target.Flush()) {
            state.SkipWithError("the stream failed");
            return;
        }
    }
    for (auto _ : state) {
        platform::File file;
        file.Open(stream.u16string(), platform::OpenMode::Read);
        BufferedReader source(file);
        DataStreamReader reader(source, *keys, settings, size,
                                static_cast<unsigned>(state.range(0)));
        if (reader.ReadDataStream(nullptr, size, 0, true) != FORMAT_OK) {
            state.SkipWithError("reading failed");
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}
BENCHMARK(ReadBack)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
