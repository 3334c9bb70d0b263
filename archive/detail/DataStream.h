#pragma once
// The data stream of one entry, read block by block through the chunk chain: the chunked form
// of format versions 2 and above, and the legacy form of the versions below.

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Common/Common/SecureBuffer.h"
#include "archive/detail/ArchiveUserSettings.h"
#include "archive/detail/BufferedIo.h"
#include "archive/detail/ChunkCodecPool.h"
#include "archive/detail/DcfRecords.h"
#include "archive/detail/KeyContext.h"
#include "archive/detail/ResultCodes.h"
#include "crypto/ChunkChain.h"

// The records in front of an entry's data stream.
struct EntryHead {
    dcf::FileHeader header;
    std::vector<std::uint8_t> tagBlock;  // decrypted; empty when the entry has none
    std::uint64_t start = 0;             // where the file header begins in the source
};

// The state that serves all entries of one run: the chain of the archive's keys, two sets of
// chunk buffers of 1280·B bytes each (plaintext, wiped when released), and the inflate workers.
// Chunks go in batches: read and undone from the chain in order on the calling thread, inflated
// by the workers, then written in order on the calling thread; while the workers inflate one
// batch, the caller writes the one before and reads the one after.
//
// Told that entries follow one another (ExpectEntries), the reader reads ahead across them: it
// takes an entry to have the chunks its pieces would make and reads on into the records and
// chunks of the next entries, so that a batch holds the chunks of many small files. Should a
// stream end elsewhere than its pieces foretell, or reading ahead fail, the reader goes back to
// where the entry being written stands and reads from there one entry at a time, as it does
// when not told: then a batch never reaches past the entry's stream, holding no more chunks
// than the rest of the entry needs, with those in hand, if every chunk gave the most it can.
class DataStreamReader {
public:
    // `workers` threads inflate, the caller's included (0 counts as 1).
    DataStreamReader(BufferedReader& source, const KeyContext& keys,
                     const DCCArchiveUserSettings& settings, std::uint64_t total,
                     unsigned workers = CodecWorkers(0));
    ~DataStreamReader();
    DataStreamReader(const DataStreamReader&) = delete;
    DataStreamReader& operator=(const DataStreamReader&) = delete;

    // From here on the source holds `count` entries of `formatVersion`, each its records
    // (ReadEntryHead) and then its stream.
    void ExpectEntries(std::uint8_t formatVersion, std::size_t count);
    // The next entry's records; nothing when its header can't be read or is no file header, or
    // its tag block can't be read.
    std::optional<EntryHead> ReadEntryHead();
    // Where the entries read so far end in the source: behind the records and chunks taken.
    std::uint64_t Position() const { return position_; }

    // Reads the stream of an entry of `size` bytes and writes the file's bytes to `target`,
    // unless `skip` is set or `target` is null. `processed` is the progress before this entry;
    // onProgress hears each rise of the whole percent. FORMAT_CANCELLED when the cancel flag
    // is seen before a block, FORMAT_OUTPUT_WRITE_FAILED for a failed write, FORMAT_FAILED for
    // a damaged or short stream. The chunks before the one that fails are written.
    FormatResult ReadDataStream(BufferedWriter* target, std::uint64_t size, std::uint64_t processed,
                                bool skip);
    // The uncompressed form: floor(size / B) + 1 blocks holding the bytes directly. Neither the
    // cancel flag nor a percent rise is waited for; progress is told at every hundredth block.
    FormatResult ReadLegacyDataStream(BufferedWriter* target, std::uint64_t size,
                                      std::uint64_t processed, bool skip);

private:
    // Where the entry being written stands.
    struct Entry {
        BufferedWriter* target;
        std::uint64_t processed;
        std::uint32_t lastPercent = 0;
    };
    // One chunk of a batch: whose it is, where it ends, and what inflate made of it. Its data
    // blocks are read still encrypted; the worker that inflates them decrypts them first, with
    // the chain as it stood before them.
    struct Slot {
        std::uint32_t compressed = 0;
        std::size_t dataBytes = 0;
        std::optional<crypto::ChunkChain> dataChain;
        std::size_t produced = 0;
        bool inflated = false;
        std::uint64_t entry = 0;                  // the ordinal of its entry
        bool last = false;                        // read ahead as its entry's last chunk
        std::uint64_t end = 0;                    // the source position behind it
        std::optional<crypto::ChunkChain> chain;  // the chain behind it
    };
    // A batch in one set of slots: its chunks, what stopped its reading early, and whether it
    // was read ahead past what the entry being written surely holds.
    struct Batch {
        std::size_t first = 0;
        std::size_t count = 0;
        FormatResult read = FORMAT_OK;
        bool ahead = false;
    };
    // An entry whose records were read ahead of its turn.
    struct AheadEntry {
        EntryHead head;
        std::uint64_t dataStart = 0;
    };

    // Sets up the chain and the buffers; false when the suite can't carry a data stream.
    bool Prepare();
    // The records of an entry at the reading position; a tag block longer than `tagLimit`
    // counts as unreadable.
    bool ReadRecords(EntryHead& head, std::uint64_t tagLimit);
    // Reading moves on to the stream of entry `ordinal` of `size` bytes.
    void BeginReading(std::uint64_t ordinal, std::uint64_t size);
    // Reads the next entry's records ahead of their turn; false when reading stops here.
    bool ReadAheadRecords();
    // Reads `bytes` (a whole number of blocks) into the front of `area` and undoes the chain.
    bool ReadBlocks(std::span<std::uint8_t> area, std::size_t bytes);
    // One chunk into the slot, its length block decrypted and its data blocks not yet, asking
    // the cancel flag before each block.
    FormatResult ReadChunk(std::size_t index);
    // The chunks the entry being written needs at least beyond those written and `inHand`.
    std::uint64_t ChunksStillNeeded(std::uint64_t inHand) const;
    // Chunks read and not yet written.
    std::size_t ChunksInHand() const;
    // Reads whole chunks in order into the batch's slots, up to a batch; notes what stopped
    // the reading early.
    void ReadBatch(Batch& batch);
    // Makes the next batch the one to write: the batch in flight, or one read now; reads the
    // batch after it and hands that to the workers.
    void Advance();
    void StartInflating(const Batch& batch);
    // Whether anything was read, or failed to be, behind the position.
    bool ReadPast();
    // Waits for the workers and empties both sets.
    void DropBatches();
    // Drops everything read past the position of the entry being written and reads on from
    // there one entry at a time.
    void GoBack();
    // The next chunk of the entry being written, read and inflated; nothing when reading
    // stopped with `result` (FORMAT_OK: the entry was read too far and must go back).
    Slot* NextSlot(FormatResult& result);
    void ReportProgress(std::uint64_t processed, std::uint32_t& lastPercent, bool onlyRises);
    std::span<std::uint8_t> InputArea(std::size_t slot);
    std::span<std::uint8_t> OutputArea(std::size_t slot);

    BufferedReader& source_;
    const KeyContext& keys_;
    const DCCArchiveUserSettings& settings_;
    std::uint64_t total_;
    std::optional<crypto::ChunkChain> chain_;
    ChunkCodecPool inflaters_;
    std::size_t capacity_ = 0;
    // One area per set of slots, so that a stream of a few chunks touches a few slots' pages.
    std::unique_ptr<Zelmarik::WipingBytes> inputs_[2];
    std::unique_ptr<Zelmarik::WipingBytes> outputs_[2];
    std::vector<Slot> slots_;
    Batch batches_[2];
    ChunkCodecPool::Job inflate_;  // inflates slot inflateFirst_ + index
    std::size_t inflateFirst_ = 0;

    // Writing: the set being written, its next slot, and the entry being written.
    std::size_t current_ = 0;
    std::size_t cursor_ = 0;
    std::uint64_t entry_ = 0;
    std::uint64_t entrySize_ = 0;
    std::uint64_t entryWritten_ = 0;
    std::uint64_t position_ = 0;                         // behind what was written or taken
    std::optional<crypto::ChunkChain> chainAtPosition_;  // the chain there

    // Reading: the entry whose chunks are read, and how many more it is taken to have.
    bool entries_ = false;
    std::uint8_t formatVersion_ = 0;
    std::uint64_t entryCount_ = 0;
    std::uint64_t readEntry_ = 0;
    std::uint64_t chunksLeft_ = 0;
    bool readAhead_ = false;
    // Why reading stopped, until the writing catches up, and whether that was ahead.
    FormatResult stopResult_ = FORMAT_OK;
    bool stopAhead_ = false;
    std::deque<AheadEntry> ahead_;
    std::uint64_t aheadTagBytes_ = 0;
};
