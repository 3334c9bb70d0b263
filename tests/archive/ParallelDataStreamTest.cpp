// The data stream writer and reader with one, two and three codec workers: the writer's bytes do
// not depend on the workers, zlib inflates every chunk and the reader reads them back; the
// writer's cancellation comes as with one worker; a batch of the reader never reaches into the
// next entry unless it reads entries ahead, and then whatever the streams hold comes back as read
// one by one.
#include <gtest/gtest.h>
#include <zlib.h>

#include <filesystem>
#include <string>
#include <vector>

#include "archive/detail/BufferedIo.h"
#include "archive/detail/DataStream.h"
#include "archive/detail/DataStreamWriter.h"
#include "archive/detail/DcfRecords.h"
#include "crypto/ChunkChain.h"
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

// An entry as an archive holds it: its file header, a tag block when tagged, and its stream cut
// into chunks of `cut` bytes (the writer's pieces by default).
struct TestEntry {
    Bytes content;
    bool tagged = false;
    std::size_t cut = kPiece;
};

// Appends the entry to the image; gives where its header begins.
std::size_t AddEntry(tests::ImageBuilder& builder, const TestEntry& entry) {
    const std::size_t start = builder.Size();
    const Bytes tags = entry.tagged ? tests::OneCategoryBlock() : Bytes{};
    builder.FileHeader(
        {entry.content.size(), entry.tagged, dcf::RaisedTagBlockLength(tags.size())});
    if (entry.tagged) {
        builder.TagBlock(tags);
    }
    builder.StartStream();
    for (std::size_t offset = 0; offset < entry.content.size(); offset += entry.cut) {
        const Bytes compressed = tests::Compress(
            std::span(entry.content)
                .subspan(offset, std::min(entry.cut, entry.content.size() - offset)));
        builder.Chunk(static_cast<std::uint32_t>(compressed.size()), compressed);
    }
    return start;
}

Bytes ReadAll(const fs::path& path) {
    return tests::ReadBytes(path).value_or(Bytes{});
}

platform::File Open(const fs::path& path, platform::OpenMode mode) {
    platform::File file;
    EXPECT_EQ(file.Open(path.u16string(), mode), platform::kErrorSuccess);
    return file;
}

// The entries of `sizes` in `streams`, each chunk undone from the chain and inflated by zlib's
// own uncompress, as any zlib would read them.
std::vector<Bytes> InflateWithZlib(const Bytes& streams, const std::vector<std::size_t>& sizes,
                                   const KeyContext& keys) {
    auto chain = *crypto::ChunkChain::Create(keys.SuiteId, keys.KeySchedule, keys.IvArea);
    const std::size_t block = chain.BlockSize();
    std::size_t position = 0;
    const auto take = [&](std::size_t length) {
        EXPECT_LE(position + length, streams.size());
        length = std::min(length, streams.size() - position);
        Bytes bytes(streams.begin() + static_cast<std::ptrdiff_t>(position),
                    streams.begin() + static_cast<std::ptrdiff_t>(position + length));
        position += length;
        chain.DecryptBlocks(bytes);
        return bytes;
    };
    std::vector<Bytes> entries;
    for (const std::size_t size : sizes) {
        chain.Restart();
        Bytes entry;
        while (entry.size() < size && position < streams.size()) {
            const std::uint32_t compressed = dcf::DecodeChunkLength(take(block));
            const Bytes data = take(dcf::ChunkDataBlocks(compressed, block) * block);
            Bytes piece(kPiece);
            uLongf length = piece.size();
            EXPECT_EQ(uncompress(piece.data(), &length, data.data(), compressed), Z_OK);
            entry.insert(entry.end(), piece.begin(),
                         piece.begin() + static_cast<std::ptrdiff_t>(length));
        }
        entries.push_back(std::move(entry));
    }
    EXPECT_EQ(position, streams.size());
    return entries;
}

class ParallelDataStreamTest : public ::testing::Test {
protected:
    fs::path Save(const std::string& name, const Bytes& bytes) {
        tests::WriteBytes(folder_.Native() / name, bytes);
        return folder_.Native() / name;
    }

    // Writes each content as one entry's stream, through one writer, into a file; gives the
    // result of each stream.
    std::vector<FormatResult> WriteStreams(const std::vector<Bytes>& contents, unsigned workers,
                                           const fs::path& out, std::uint64_t processed = 0,
                                           std::uint64_t total = 1) {
        platform::File target = Open(out, platform::OpenMode::CreateAlways);
        BufferedWriter buffered(target);
        DataStreamWriter writer(buffered, builder_.Keys(), settings_, total, workers);
        std::vector<FormatResult> results;
        for (std::size_t i = 0; i < contents.size(); ++i) {
            platform::File source =
                Open(Save("source" + std::to_string(i), contents[i]), platform::OpenMode::Read);
            results.push_back(writer.WriteDataStream(source, contents[i].size(), processed));
        }
        EXPECT_TRUE(buffered.Flush());
        return results;
    }

    fs::path Out(std::size_t i) const { return folder_.Native() / ("read" + std::to_string(i)); }

    // Reads the streams of `sizes` from `image` into "read0" on, up to the first that fails.
    // With `heads`, as the archive reader does: each entry's records first, entries read ahead,
    // and each size taken from its header; then also where each entry begins and ends.
    struct ReadBack {
        std::vector<std::size_t> starts;
        std::vector<Bytes> tags;
        std::vector<FormatResult> results;
        std::vector<std::size_t> ends;
    };
    ReadBack Read(const Bytes& image, const std::vector<std::size_t>& sizes, unsigned workers,
                  bool heads = false, std::uint64_t total = 1) {
        platform::File stored = Open(Save("image", image), platform::OpenMode::Read);
        BufferedReader source(stored);
        DataStreamReader reader(source, builder_.Keys(), settings_, total, workers);
        if (heads) {
            reader.ExpectEntries(dcf::kFormatVersion, sizes.size());
        }
        ReadBack back;
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            std::size_t size = sizes[i];
            if (heads) {
                const std::optional<EntryHead> head = reader.ReadEntryHead();
                if (!head) {
                    break;
                }
                back.starts.push_back(head->start);
                back.tags.push_back(head->tagBlock);
                size = head->header.size;
            }
            platform::File file = Open(Out(i), platform::OpenMode::CreateAlways);
            BufferedWriter target(file);
            back.results.push_back(reader.ReadDataStream(&target, size, 0, false));
            back.ends.push_back(reader.Position());
            if (back.results.back() != FORMAT_OK) {
                break;
            }
        }
        return back;
    }

    tests::TestFolder folder_;
    tests::ImageBuilder builder_{tests::ImageSettings{}};
    tests::Recorder recorder_;
    DCCArchiveUserSettings settings_;
};

TEST_F(ParallelDataStreamTest, BytesDoNotDependOnWorkersAndZlibAndTheReaderReadThemBack) {
    std::vector<Bytes> contents;
    std::vector<std::size_t> sizes;
    std::uint32_t seed = 1;
    for (const std::size_t size :
         {std::size_t{1}, kPiece - 1, kPiece, kPiece + 1, kBatch * kPiece - 1, kBatch * kPiece,
          kBatch * kPiece + 1, (kBatch + 1) * kPiece, 2 * kBatch * kPiece + 7}) {
        contents.push_back(Content(size, seed++));
        sizes.push_back(size);
    }
    Bytes single;
    for (const unsigned workers : kWorkerCounts) {
        SCOPED_TRACE(workers);
        const fs::path out = folder_.Native() / "streams";
        const std::vector<FormatResult> results = WriteStreams(contents, workers, out);
        EXPECT_EQ(results, std::vector<FormatResult>(contents.size(), FORMAT_OK));
        const Bytes written = ReadAll(out);
        if (workers == 1) {
            single = written;
            ASSERT_EQ(InflateWithZlib(written, sizes, builder_.Keys()), contents);
        } else {
            ASSERT_EQ(written, single);
        }
        ASSERT_EQ(Read(written, sizes, workers).results, results);
        for (std::size_t i = 0; i < contents.size(); ++i) {
            EXPECT_EQ(ReadAll(Out(i)), contents[i]) << "entry " << i;
        }
    }
}

// Small entries share batches: queued one after the other with records between them and
// written at the end, they give the bytes of each written by itself, for any worker count.
TEST_F(ParallelDataStreamTest, EntriesQueuedTogetherGiveTheBytesOfEntriesWrittenOneByOne) {
    std::vector<Bytes> contents;
    for (std::uint32_t i = 0; i < 150; ++i) {
        contents.push_back(Content(1 + i * 97 % (3 * kPiece), i));
    }
    const Bytes record(32, 0xA5);
    const auto writeAll = [&](unsigned workers, bool flushEach) {
        const fs::path out = folder_.Native() / "out";
        platform::File target = Open(out, platform::OpenMode::CreateAlways);
        BufferedWriter buffered(target);
        DataStreamWriter writer(buffered, builder_.Keys(), settings_, 1, workers);
        for (std::size_t i = 0; i < contents.size(); ++i) {
            writer.QueueRecord(record);
            platform::File source = Open(Save("source", contents[i]), platform::OpenMode::Read);
            EXPECT_EQ(flushEach ? writer.WriteDataStream(source, contents[i].size(), 0)
                                : writer.QueueDataStream(source, contents[i].size(), 0),
                      FORMAT_OK);
        }
        EXPECT_EQ(writer.Flush(), FORMAT_OK);
        EXPECT_TRUE(buffered.Flush());
        return ReadAll(out);
    };
    const Bytes oneByOne = writeAll(1, true);
    for (const unsigned workers : kWorkerCounts) {
        SCOPED_TRACE(workers);
        EXPECT_EQ(writeAll(workers, false), oneByOne);
    }
}

// The flag goes up while the second batch is read: the piece whose report set it is the last
// one looked at, however many workers deflate the batch.
TEST_F(ParallelDataStreamTest, CancelInsideABatchEndsTheStreamAtThatPiece) {
    recorder_.Attach(settings_);
    const Bytes cancelled = Content(90 * kPiece, 3);  // a call at every piece
    for (const unsigned workers : kWorkerCounts) {
        SCOPED_TRACE(workers);
        recorder_.percents.clear();
        recorder_.cancel = 0;
        recorder_.cancelAfterPercents = kBatch + 6;
        EXPECT_EQ(WriteStreams({cancelled}, workers, folder_.Native() / "out"),
                  std::vector<FormatResult>{FORMAT_CANCELLED});
        EXPECT_EQ(recorder_.percents.size(), kBatch + 6);
    }
}

// Chunks that give the most a chunk can (1280·B bytes), the last one more than the entry has
// left: a batch sized for pieces of 128·B would read the next entry's chunks as this one's.
TEST_F(ParallelDataStreamTest, ReaderBatchStopsAtTheEntrysLastChunk) {
    constexpr std::size_t kLargest = 1280 * 16;
    const Bytes large = Content(5 * kLargest, 6);
    const std::size_t largeSize = 4 * kLargest + 9;  // the fifth chunk is cut
    builder_.StartStream();
    for (std::size_t offset = 0; offset < large.size(); offset += kLargest) {
        const Bytes compressed = tests::Compress(std::span(large).subspan(offset, kLargest));
        builder_.Chunk(static_cast<std::uint32_t>(compressed.size()), compressed);
    }
    const Bytes next = Content(3 * kPiece, 7);
    builder_.DataStream(next);
    for (const unsigned workers : kWorkerCounts) {
        SCOPED_TRACE(workers);
        EXPECT_EQ(Read(builder_.Image(), {largeSize, next.size()}, workers).results,
                  (std::vector<FormatResult>{FORMAT_OK, FORMAT_OK}));
        EXPECT_EQ(ReadAll(Out(0)), Bytes(large.begin(), large.begin() + largeSize));
        EXPECT_EQ(ReadAll(Out(1)), next);
    }
}

// Small, empty and tagged files share batches with the pieces of the next; a large one runs
// through several batches into the next entry. Two streams of another writer lie among them: one
// chunk for three pieces, and chunks of a quarter piece.
TEST_F(ParallelDataStreamTest, EntriesReadAheadComeBackWithTheirRecordsAndPlaces) {
    std::vector<TestEntry> entries;
    for (std::uint32_t i = 0; i < 300; ++i) {
        const std::size_t size = i % 11 == 0 ? 0 : 1 + i * 997 % (4 * kPiece);
        entries.push_back({Content(size, i), i % 7 == 3});
    }
    entries.insert(entries.begin() + 150, {Content(3 * 128 * kPiece + 5, 400), true});
    entries[10] = {Content(3 * kPiece, 50), false, 3 * kPiece};
    entries[25] = {Content(2 * kPiece + 9, 51), true, kPiece / 4};
    std::vector<std::size_t> starts;
    for (const TestEntry& entry : entries) {
        starts.push_back(AddEntry(builder_, entry));
    }
    std::vector<std::size_t> ends(starts.begin() + 1, starts.end());
    ends.push_back(builder_.Size());
    for (const unsigned workers : kWorkerCounts) {
        SCOPED_TRACE(workers);
        const ReadBack back =
            Read(builder_.Image(), std::vector<std::size_t>(entries.size()), workers, true);
        ASSERT_EQ(back.results, std::vector<FormatResult>(entries.size(), FORMAT_OK));
        EXPECT_EQ(back.starts, starts);
        EXPECT_EQ(back.ends, ends);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            EXPECT_EQ(ReadAll(Out(i)), entries[i].content) << "entry " << i;
            EXPECT_EQ(back.tags[i],
                      entries[i].tagged ? dcf::EncodeTagBlock(tests::OneCategoryBlock()) : Bytes{})
                << "entry " << i;
        }
    }
}

// A damaged header, a chunk that does not inflate and an image cut short, each behind entries
// read ahead: the entries before come back whole, and the damage is told at its own entry.
TEST_F(ParallelDataStreamTest, DamageReadAheadIsToldAtItsTurn) {
    std::vector<std::size_t> starts;
    for (std::uint32_t i = 0; i < 30; ++i) {
        starts.push_back(AddEntry(builder_, {Content(kPiece + 100 * i, i)}));
    }
    struct Case {
        Bytes image;
        std::size_t heads;  // headers read
        bool streamFails;   // the last entry's stream fails, after its first piece
    };
    Bytes damagedHeader = builder_.Image();
    damagedHeader[starts[12] + 8] ^= 1;
    const Bytes cut(builder_.Image().begin(), builder_.Image().begin() + starts[20] - 1);
    Bytes damagedChunk = builder_.Image();
    const std::size_t secondChunk =
        builder_
            .Borders()[std::find(builder_.Borders().begin(), builder_.Borders().end(), starts[12]) -
                       builder_.Borders().begin() + 2];
    damagedChunk[secondChunk + 40] ^= 0x55;
    for (const Case& c :
         {Case{damagedHeader, 12, false}, Case{cut, 20, true}, Case{damagedChunk, 13, true}}) {
        for (const unsigned workers : kWorkerCounts) {
            SCOPED_TRACE(workers);
            const ReadBack back =
                Read(c.image, std::vector<std::size_t>(starts.size()), workers, true);
            std::vector<FormatResult> expected(c.heads, FORMAT_OK);
            if (c.streamFails) {
                expected.back() = FORMAT_FAILED;
            }
            EXPECT_EQ(back.results, expected);
            for (std::size_t i = 0; i < c.heads; ++i) {
                const Bytes whole = Content(kPiece + 100 * i, static_cast<std::uint32_t>(i));
                EXPECT_EQ(ReadAll(Out(i)), c.streamFails && i + 1 == c.heads
                                               ? Bytes(whole.begin(), whole.begin() + kPiece)
                                               : whole)
                    << "entry " << i;
            }
        }
    }
}

}  // namespace
