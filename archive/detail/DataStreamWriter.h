#pragma once
// The data streams of a new archive: each file cut into pieces of 128·B bytes, each compressed by
// itself into a chunk of a length block and data blocks, all blocks of an entry through one
// chunk chain.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Common/Common/SecureBuffer.h"
#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/BufferedIo.h"
#include "archive/detail/ChunkCodecPool.h"
#include "archive/detail/KeyContext.h"
#include "archive/detail/ResultCodes.h"
#include "crypto/ChunkChain.h"
#include "platform/File.h"

// The state that serves all entries of one run: the chain of the archive's keys, two sets of
// buffers for a batch of pieces and their chunks (plaintext, wiped when released), and the
// deflate workers. What is to be written goes into a queue of records and the pieces of data
// streams. Pieces are read in order on the calling thread; when a batch is full, all of them,
// from however many entries, go to the workers, and the calling thread chains and writes the
// batch before it meanwhile, then reads on into the other set. So a run of small files shares
// batches, and the bytes written do not depend on the number of workers. Memory does not
// depend on the size of a file.
class DataStreamWriter {
public:
    // `total` is the sum of all sizes, which the percent of onProgress is taken of. `workers`
    // threads deflate, the caller's included (0 counts as 1).
    DataStreamWriter(BufferedWriter& target, const KeyContext& keys,
                     const DCCArchiveUserSettings& settings, std::uint64_t total, unsigned workers);
    ~DataStreamWriter();
    DataStreamWriter(const DataStreamWriter&) = delete;
    DataStreamWriter& operator=(const DataStreamWriter&) = delete;

    // Queues a record (a file header, a tag block) to be written as it stands.
    void QueueRecord(std::vector<std::uint8_t> record);
    // Reads the stream of `size` bytes from `source` into the queue; the source may be closed
    // afterwards. `processed` is the progress before this entry; onProgress hears it grow, at
    // every hundredth piece, as each piece is read. FORMAT_SOURCE_OPEN_FAILED when reading the
    // source fails, FORMAT_CANCELLED when the cancel flag is seen before a piece, FORMAT_FAILED
    // when the size has 2^31 whole pieces or more, and what a write of a full batch gives. On
    // a failure the queue is dropped. A source shorter than `size` reads as zeros behind its end.
    FormatResult QueueDataStream(platform::File& source, std::uint64_t size,
                                 std::uint64_t processed);
    // Deflates and writes everything queued. FORMAT_FAILED when compression fails,
    // FORMAT_WRITE_FAILED when a write fails; the rest of the queue is then dropped.
    FormatResult Flush();

    // One entry's stream, queued and flushed.
    FormatResult WriteDataStream(platform::File& source, std::uint64_t size,
                                 std::uint64_t processed);

private:
    // Where the entry being read stands.
    struct Entry {
        platform::File& source;
        std::uint64_t size;
        std::uint64_t wholePieces;
        std::uint64_t step;
        std::uint64_t processed;
        std::uint64_t next = 0;  // index of the next piece
    };
    // One piece of the batch: its length, and what deflate made of it.
    struct Slot {
        std::size_t length = 0;
        std::size_t compressed = 0;
        bool deflated = false;
    };
    // What the queue holds, in the order of writing: a record, or a chunk in a slot (the first
    // of its entry restarts the chain).
    struct Item {
        std::vector<std::uint8_t> record;
        std::optional<std::size_t> slot;
        bool firstChunk = false;
    };

    bool Prepare();
    // Reads pieces of the entry into free slots, telling progress and asking the cancel flag for
    // each as it goes, until the entry ends or the batch is full.
    FormatResult ReadPieces(Entry& entry);
    // The full batch goes to the workers; the one before it, deflated by then, is written
    // meanwhile, and the next one is read into its set.
    FormatResult PassBatch();
    FormatResult WriteItems(const std::vector<Item>& items);
    // Waits for the workers and forgets everything queued.
    void DropQueue();
    // The next `piece.size()` bytes of the source; false on a read error.
    bool ReadPiece(platform::File& source, std::span<std::uint8_t> piece, std::uint64_t remaining);
    void ReportProgress(std::uint64_t processed);
    std::span<std::uint8_t> PieceArea(std::size_t slot);
    // Slot `slot`'s chunk as stored: the length block, then room for 2·128·B compressed bytes
    // and the block they may gain.
    std::span<std::uint8_t> ChunkArea(std::size_t slot);

    BufferedWriter& target_;
    const KeyContext& keys_;
    const DCCArchiveUserSettings& settings_;
    std::uint64_t total_;
    std::optional<crypto::ChunkChain> chain_;
    ChunkCodecPool deflaters_;
    // Source bytes read ahead in large blocks, handed out a piece at a time.
    Zelmarik::SecureVector<std::uint8_t> sourceBuffer_;
    std::size_t sourceBegin_ = 0;
    std::size_t sourceEnd_ = 0;
    std::size_t pieceSize_ = 0;
    std::size_t chunkCapacity_ = 0;
    Zelmarik::SecureVector<std::uint8_t> pieces_;
    Zelmarik::SecureVector<std::uint8_t> chunks_;
    std::vector<Slot> slots_;
    // The batch being read: the first slot of its set, its slots in use, and its queue.
    std::size_t first_ = 0;
    std::size_t slotsUsed_ = 0;
    std::vector<Item> queue_;
    // The batch with the workers: its queue, and the first slot of its set for the job.
    std::vector<Item> deflating_;
    std::size_t deflateFirst_ = 0;
    ChunkCodecPool::Job deflate_;
};
