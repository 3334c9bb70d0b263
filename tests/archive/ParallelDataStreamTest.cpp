// The data stream writer with one, two and three deflate workers: the same bytes as chunks made
// one by one, readable by the reader, the same progress calls, and the ways out of a stream.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "archive/BufferedIo.h"
#include "archive/DataStream.h"
#include "archive/DataStreamWriter.h"
#include "tests/TestFolder.h"
#include "tests/archive/ImageBuilder.h"
#include "tests/archive/ReaderFixture.h"

namespace {

using tests::Bytes;
namespace fs = std::filesystem;

constexpr std::size_t kPiece = 2048;  // 128·B with suite 1
constexpr std::size_t kBatch = 64;    // the writer's batch of pieces
constexpr unsigned kWorkerCounts[] = {1, 2, 3};

// Text with stretches of noise, so that chunks come out of many lengths, some at a multiple of
// the block.
Bytes Content(std::size_t size, std::uint32_t seed) {
    Bytes bytes = tests::Noise(size, seed);
    for (std::size_t i = 0; i < size; ++i) {
        if ((i / 700 + seed) % 3 != 0) {
            bytes[i] = static_cast<std::uint8_t>("entry ok; "[i % 10]);
        }
    }
    return bytes;
}

Bytes ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

class ParallelDataStreamTest : public ::testing::Test {
protected:
    fs::path Save(const std::string& name, const Bytes& bytes) {
        const fs::path path = folder_.Native() / name;
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return path;
    }

    // Writes each content as one entry's stream, through one writer, into a file; gives the
    // result of each stream.
    std::vector<FormatResult> WriteStreams(const std::vector<Bytes>& contents, unsigned workers,
                                           const fs::path& out, std::uint64_t processed = 0,
                                           std::uint64_t total = 1) {
        platform::File target;
        EXPECT_EQ(target.Open(out.u16string(), platform::OpenMode::CreateAlways),
                  platform::kErrorSuccess);
        BufferedWriter buffered(target);
        DataStreamWriter writer(buffered, builder_.Keys(), settings_, total, workers);
        std::vector<FormatResult> results;
        for (std::size_t i = 0; i < contents.size(); ++i) {
            const fs::path path = Save("source" + std::to_string(i), contents[i]);
            platform::File source;
            EXPECT_EQ(source.Open(path.u16string(), platform::OpenMode::Read),
                      platform::kErrorSuccess);
            results.push_back(writer.WriteDataStream(source, contents[i].size(), processed));
        }
        EXPECT_TRUE(buffered.Flush());
        return results;
    }

    tests::TestFolder folder_;
    tests::ImageBuilder builder_{tests::ImageSettings{}};
    tests::Recorder recorder_;
    DCCArchiveUserSettings settings_;
};

TEST_F(ParallelDataStreamTest, BytesAreThoseOfChunksMadeOneByOneAndReadBack) {
    std::vector<Bytes> contents;
    std::uint32_t seed = 1;
    for (const std::size_t size :
         {std::size_t{1}, kPiece - 1, kPiece, kPiece + 1, kBatch * kPiece - 1, kBatch * kPiece,
          kBatch * kPiece + 1, (kBatch + 1) * kPiece, 2 * kBatch * kPiece + 7}) {
        contents.push_back(Content(size, seed++));
    }
    for (const Bytes& content : contents) {
        builder_.DataStream(content);
    }
    for (const unsigned workers : kWorkerCounts) {
        SCOPED_TRACE(workers);
        const fs::path out = folder_.Native() / "streams";
        const std::vector<FormatResult> results = WriteStreams(contents, workers, out);
        EXPECT_EQ(results, std::vector<FormatResult>(contents.size(), FORMAT_OK));
        ASSERT_EQ(ReadAll(out), builder_.Image());

        platform::File stored;
        ASSERT_EQ(stored.Open(out.u16string(), platform::OpenMode::Read), platform::kErrorSuccess);
        BufferedReader source(stored);
        DataStreamReader reader(source, builder_.Keys(), settings_, 1);
        for (const Bytes& content : contents) {
            const fs::path back = folder_.Native() / "back";
            platform::File file;
            ASSERT_EQ(file.Open(back.u16string(), platform::OpenMode::CreateAlways),
                      platform::kErrorSuccess);
            BufferedWriter target(file);
            ASSERT_EQ(reader.ReadDataStream(&target, content.size(), 0, false), FORMAT_OK);
            file.Close();
            EXPECT_EQ(ReadAll(back), content);
        }
    }
}

TEST_F(ParallelDataStreamTest, ProgressIsTheSameSequenceForAnyWorkerCount) {
    recorder_.Attach(settings_);
    // 250 whole pieces and a short one (a call every third piece), then a size at a multiple of
    // the piece, whose last call comes with no piece behind it.
    const std::vector<Bytes> contents = {Content(250 * kPiece + 100, 1),
                                         Content(3 * kBatch * kPiece, 2)};
    std::vector<std::uint32_t> single;
    for (const unsigned workers : kWorkerCounts) {
        SCOPED_TRACE(workers);
        recorder_.percents.clear();
        WriteStreams(contents, workers, folder_.Native() / "out", 5000, 1'100'000);
        if (workers == 1) {
            single = recorder_.percents;
            EXPECT_GT(single.size(), 100u);
        } else {
            EXPECT_EQ(recorder_.percents, single);
        }
    }
}

TEST_F(ParallelDataStreamTest, CancelInsideABatchEndsTheStreamAndTheWriterGoesOn) {
    recorder_.Attach(settings_);
    const Bytes cancelled = Content(90 * kPiece, 3);  // a call at every piece
    const Bytes next = Content(kBatch * kPiece + 5, 4);
    builder_.DataStream(next);
    for (const unsigned workers : kWorkerCounts) {
        SCOPED_TRACE(workers);
        recorder_.percents.clear();
        recorder_.cancel = 0;
        recorder_.cancelAfterPercents = kBatch + 6;  // set while the second batch is read
        const fs::path out = folder_.Native() / "out";
        platform::File target;
        ASSERT_EQ(target.Open(out.u16string(), platform::OpenMode::CreateAlways),
                  platform::kErrorSuccess);
        BufferedWriter buffered(target);
        DataStreamWriter writer(buffered, builder_.Keys(), settings_, 1, workers);
        platform::File first;
        ASSERT_EQ(first.Open(Save("cancelled", cancelled).u16string(), platform::OpenMode::Read),
                  platform::kErrorSuccess);
        EXPECT_EQ(writer.WriteDataStream(first, cancelled.size(), 0), FORMAT_CANCELLED);
        // The piece whose report set the flag is the last one looked at.
        EXPECT_EQ(recorder_.percents.size(), kBatch + 6);

        ASSERT_TRUE(buffered.Flush());
        std::uint64_t cut = 0;
        ASSERT_EQ(target.Tell(cut), platform::kErrorSuccess);
        recorder_.cancel = 0;
        platform::File second;
        ASSERT_EQ(second.Open(Save("next", next).u16string(), platform::OpenMode::Read),
                  platform::kErrorSuccess);
        EXPECT_EQ(writer.WriteDataStream(second, next.size(), 0), FORMAT_OK);
        ASSERT_TRUE(buffered.Flush());
        const Bytes all = ReadAll(out);
        EXPECT_EQ(Bytes(all.begin() + static_cast<std::ptrdiff_t>(cut), all.end()),
                  builder_.Image());
    }
}

TEST_F(ParallelDataStreamTest, FailedWritesAreTheStreamsResult) {
    // A target opened for reading refuses the write of the first full buffer.
    const fs::path out = Save("readonly", {});
    const Bytes content = tests::Noise(3 * kBatch * kPiece, 5);
    const fs::path path = Save("source", content);
    for (const unsigned workers : kWorkerCounts) {
        SCOPED_TRACE(workers);
        platform::File target;
        ASSERT_EQ(target.Open(out.u16string(), platform::OpenMode::Read), platform::kErrorSuccess);
        BufferedWriter buffered(target);
        DataStreamWriter writer(buffered, builder_.Keys(), settings_, 1, workers);
        platform::File source;
        ASSERT_EQ(source.Open(path.u16string(), platform::OpenMode::Read), platform::kErrorSuccess);
        EXPECT_EQ(writer.WriteDataStream(source, content.size(), 0), FORMAT_WRITE_FAILED);
    }
}

}  // namespace
