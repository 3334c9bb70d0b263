#pragma once
// The data stream of one entry of a new archive: the file cut into pieces of 128·B bytes, each
// compressed by itself into a chunk of a length block and data blocks, all blocks of the entry
// through one chunk chain.

#include <cstdint>
#include <optional>
#include <vector>

#include "archive/ArchiveUserSettings.h"
#include "archive/BufferedIo.h"
#include "archive/ChunkDeflater.h"
#include "archive/KeyContext.h"
#include "archive/ResultCodes.h"
#include "crypto/ChunkChain.h"
#include "platform/File.h"

// The state that serves all entries of one run: the chain of the archive's keys, the buffers,
// and the deflate stream. Memory does not depend on the size of a file.
class DataStreamWriter {
public:
    // `total` is the sum of all sizes, which the percent of onProgress is taken of.
    DataStreamWriter(BufferedWriter& target, const KeyContext& keys,
                     const DCCArchiveUserSettings& settings, std::uint64_t total);

    // Writes the stream of `size` bytes read from `source`. `processed` is the progress before
    // this entry; onProgress hears it grow, at every hundredth piece. FORMAT_SOURCE_OPEN_FAILED
    // when reading the source fails, FORMAT_CANCELLED when the cancel flag is seen before a piece,
    // FORMAT_FAILED when compression fails or the size has 2^31 whole pieces or more,
    // FORMAT_WRITE_FAILED when a write fails. A source shorter than `size` reads as zeros behind
    // its end.
    FormatResult WriteDataStream(platform::File& source, std::uint64_t size,
                                 std::uint64_t processed);

private:
    bool Prepare();
    // The next `length` bytes of the source into the piece buffer; false on a read error.
    bool ReadPiece(platform::File& source, std::size_t length, std::uint64_t remaining);
    void ReportProgress(std::uint64_t processed);

    BufferedWriter& target_;
    const KeyContext& keys_;
    const DCCArchiveUserSettings& settings_;
    std::uint64_t total_;
    std::optional<crypto::ChunkChain> chain_;
    ChunkDeflater deflater_;
    // Source bytes read ahead in large blocks, handed out a piece at a time.
    std::vector<std::uint8_t> sourceBuffer_;
    std::size_t sourceBegin_ = 0;
    std::size_t sourceEnd_ = 0;
    std::vector<std::uint8_t> piece_;
    // One chunk as stored: the length block, then room for 2·128·B compressed bytes.
    std::vector<std::uint8_t> chunk_;
};
