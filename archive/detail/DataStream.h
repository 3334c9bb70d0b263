#pragma once
// The data stream of one entry, read block by block through the chunk chain: the chunked form
// of format versions 2 and above, and the legacy form of the versions below.

#include <cstddef>
#include <cstdint>
#include <memory>
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

// The state that serves all entries of one run: the chain of the archive's keys, two sets of
// chunk buffers of 1280·B bytes each (plaintext, wiped when released), and the inflate workers.
// Chunks go in batches: read and undone from the chain in order on the calling thread, inflated
// by the workers, then written in order on the calling thread; while the workers inflate one
// batch, the caller writes the one before and reads the one after. A batch never reaches past
// the entry's stream: it holds no more chunks than the rest of the entry needs, with those in
// hand, if every chunk gave the most it can.
class DataStreamReader {
public:
    // `workers` threads inflate, the caller's included (0 counts as 1).
    DataStreamReader(BufferedReader& source, const KeyContext& keys,
                     const DCCArchiveUserSettings& settings, std::uint64_t total,
                     unsigned workers = DefaultCodecWorkers());

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
    // Where the entry being read stands.
    struct Entry {
        BufferedWriter* target;
        std::uint64_t size;
        std::uint64_t processed;
        std::uint64_t written = 0;
        std::uint32_t lastPercent = 0;
    };
    // One chunk of the batch: its compressed length, and what inflate made of it.
    struct Slot {
        std::uint32_t compressed = 0;
        std::size_t produced = 0;
        bool inflated = false;
    };
    // A batch in one set of slots: its chunks, and what stopped its reading early.
    struct Batch {
        std::size_t first = 0;
        std::size_t count = 0;
        FormatResult read = FORMAT_OK;
    };

    // Sets up the chain and the buffers at the first stream; false when the suite can't carry
    // a data stream.
    bool Prepare();
    // Reads `bytes` (a whole number of blocks) into the front of `area` and undoes the chain.
    bool ReadBlocks(std::span<std::uint8_t> area, std::size_t bytes);
    // The chunks the entry needs at least beyond those written and those in `inFlight`.
    std::uint64_t ChunksStillNeeded(const Entry& entry, const Batch* inFlight) const;
    // Reads up to `limit` whole chunks in order into the batch's slots, asking the cancel flag
    // before each block; notes what stopped the reading early.
    void ReadBatch(Batch& batch, std::uint64_t limit);
    // Hands the batch to the workers, unless it is one chunk and the caller has nothing else to
    // do: then the caller inflates it at once. FinishInflating waits for the workers.
    void StartInflating(const Batch& batch, bool callerBusy);
    void FinishInflating();
    // Writes the chunks in order, each followed by its progress; the cancel flag is asked
    // between them, where reading them one by one would have asked it.
    FormatResult WriteBatch(Entry& entry, const Batch& batch, bool skip);
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
    bool inflating_ = false;
};
