#pragma once
// The data stream of one entry, read block by block through the chunk chain: the chunked form
// of format versions 2 and above, and the legacy form of the versions below.

#include <cstdint>
#include <optional>
#include <vector>

#include "archive/ArchiveUserSettings.h"
#include "archive/BufferedIo.h"
#include "archive/ChunkCodec.h"
#include "archive/KeyContext.h"
#include "archive/ResultCodes.h"
#include "crypto/ChunkChain.h"

// The state that serves all entries of one run: the chain of the archive's keys, the chunk
// buffers of 1280·B bytes each, and the inflate stream.
class DataStreamReader {
public:
    DataStreamReader(BufferedReader& source, const KeyContext& keys,
                     const DCCArchiveUserSettings& settings, std::uint64_t total);

    // Reads the stream of an entry of `size` bytes and writes the file's bytes to `target`,
    // unless `skip` is set or `target` is null. `processed` is the progress before this entry;
    // onProgress hears each rise of the whole percent. FORMAT_CANCELLED when the cancel flag
    // is seen before a block, FORMAT_OUTPUT_WRITE_FAILED for a failed write, FORMAT_FAILED for
    // a damaged or short stream.
    FormatResult ReadDataStream(BufferedWriter* target, std::uint64_t size, std::uint64_t processed,
                                bool skip);
    // The uncompressed form: floor(size / B) + 1 blocks holding the bytes directly. Neither the
    // cancel flag nor a percent rise is waited for; progress is told at every hundredth block.
    FormatResult ReadLegacyDataStream(BufferedWriter* target, std::uint64_t size,
                                      std::uint64_t processed, bool skip);

private:
    // Sets up the chain and the buffers at the first stream; false when the suite can't carry
    // a data stream.
    bool Prepare();
    // Reads `bytes` (a whole number of blocks) into the input buffer and undoes the chain.
    bool ReadBlocks(std::size_t bytes);
    void ReportProgress(std::uint64_t processed, std::uint32_t& lastPercent, bool onlyRises);

    BufferedReader& source_;
    const KeyContext& keys_;
    const DCCArchiveUserSettings& settings_;
    std::uint64_t total_;
    std::optional<crypto::ChunkChain> chain_;
    std::vector<std::uint8_t> input_;
    std::vector<std::uint8_t> output_;
    ChunkCodec inflater_{ChunkCodec::Direction::Inflate};
};
