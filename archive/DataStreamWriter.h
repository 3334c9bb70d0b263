#pragma once
// The data stream of one entry of a new archive: the file cut into pieces of 128·B bytes, each
// compressed by itself into a chunk of a length block and data blocks, all blocks of the entry
// through one chunk chain.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "Common/Common/SecureBuffer.h"
#include "archive/ArchiveUserSettings.h"
#include "archive/BufferedIo.h"
#include "archive/ChunkCodecPool.h"
#include "archive/KeyContext.h"
#include "archive/ResultCodes.h"
#include "crypto/ChunkChain.h"
#include "platform/File.h"

// The state that serves all entries of one run: the chain of the archive's keys, the buffers
// (plaintext, wiped when released), and the deflate workers. Pieces go in batches of a fixed count: read in order on the calling
// thread, deflated on all workers at once, then chained and written in order on the calling
// thread. The bytes written do not depend on the number of workers, and memory does not depend
// on the size of a file.
class DataStreamWriter {
public:
    // `total` is the sum of all sizes, which the percent of onProgress is taken of. `workers`
    // threads deflate, the caller's included (0 counts as 1).
    DataStreamWriter(BufferedWriter& target, const KeyContext& keys,
                     const DCCArchiveUserSettings& settings, std::uint64_t total, unsigned workers);

    // Writes the stream of `size` bytes read from `source`. `processed` is the progress before
    // this entry; onProgress hears it grow, at every hundredth piece, as each piece is read.
    // FORMAT_SOURCE_OPEN_FAILED when reading the source fails, FORMAT_CANCELLED when the cancel
    // flag is seen before a piece, FORMAT_FAILED when compression fails or the size has 2^31
    // whole pieces or more, FORMAT_WRITE_FAILED when a write fails. A source shorter than `size`
    // reads as zeros behind its end.
    FormatResult WriteDataStream(platform::File& source, std::uint64_t size,
                                 std::uint64_t processed);

private:
    // Where the entry being written stands.
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

    bool Prepare();
    // Reads up to a batch of pieces in order, telling progress and asking the cancel flag for
    // each as it goes; `count` is the number read.
    FormatResult ReadBatch(Entry& entry, std::size_t& count);
    void DeflateBatch(std::size_t count);
    FormatResult WriteBatch(std::size_t count);
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
};
