#include "archive/DataStream.h"

#include <algorithm>

#include "archive/DcfRecords.h"

namespace {

// The whole percent of `processed` in `total`, at most 100; nothing when the total is 0.
std::optional<std::uint32_t> PercentOf(std::uint64_t processed, std::uint64_t total) {
    if (total == 0) {
        return std::nullopt;
    }
    const double percent = static_cast<double>(processed) / static_cast<double>(total) * 100.0;
    return static_cast<std::uint32_t>(std::min(percent, 100.0));
}

}  // namespace

DataStreamReader::DataStreamReader(BufferedReader& source, const KeyContext& keys,
                                   const DCCArchiveUserSettings& settings, std::uint64_t total)
    : source_(source), keys_(keys), settings_(settings), total_(total) {}

bool DataStreamReader::Prepare() {
    if (!chain_) {
        chain_ = crypto::ChunkChain::Create(keys_.SuiteId, keys_.KeySchedule, keys_.IvArea);
        if (!chain_ || !inflater_.Ready()) {
            chain_.reset();
            return false;
        }
        const std::size_t capacity = dcf::kMaxChunkBlocks * chain_->BlockSize();
        input_.resize(capacity);
        output_.resize(capacity);
    }
    chain_->Restart();
    return true;
}

bool DataStreamReader::ReadBlocks(std::size_t bytes) {
    const std::span<std::uint8_t> blocks(input_.data(), bytes);
    if (!source_.Read(blocks)) {
        return false;
    }
    chain_->DecryptBlocks(blocks);
    return true;
}

void DataStreamReader::ReportProgress(std::uint64_t processed, std::uint32_t& lastPercent,
                                      bool onlyRises) {
    const std::optional<std::uint32_t> percent = PercentOf(processed, total_);
    if (!percent || (onlyRises && *percent <= lastPercent)) {
        return;
    }
    lastPercent = *percent;
    if (settings_.onProgress != nullptr) {
        settings_.onProgress(*percent, settings_.Context(CALLBACK_PROGRESS));
    }
}

FormatResult DataStreamReader::ReadDataStream(BufferedWriter* target, std::uint64_t size,
                                              std::uint64_t processed, bool skip) {
    if (size == 0) {
        return FORMAT_OK;
    }
    if (!Prepare() || !dcf::PieceCountFits(size, chain_->BlockSize())) {
        return FORMAT_FAILED;
    }
    const std::size_t blockSize = chain_->BlockSize();
    std::uint64_t written = 0;
    std::uint32_t lastPercent = 0;
    while (written < size) {
        // The length block, then the data blocks of the chunk; the cancel flag is asked before
        // each read, and a chunk is only written once it is whole.
        if (settings_.IsCancelled()) {
            return FORMAT_CANCELLED;
        }
        if (!ReadBlocks(blockSize)) {
            return FORMAT_FAILED;
        }
        const std::uint32_t compressed = dcf::DecodeChunkLength({input_.data(), blockSize});
        if (compressed == 0) {
            continue;  // a zero length keeps the next block a length block
        }
        if (compressed >= input_.size()) {
            return FORMAT_FAILED;
        }
        if (settings_.IsCancelled()) {
            return FORMAT_CANCELLED;
        }
        if (!ReadBlocks(dcf::ChunkDataBlocks(compressed, blockSize) * blockSize)) {
            return FORMAT_FAILED;
        }
        std::size_t produced = 0;
        if (!inflater_.Run({input_.data(), compressed}, output_, produced)) {
            return FORMAT_FAILED;
        }
        const auto piece =
            static_cast<std::size_t>(std::min<std::uint64_t>(produced, size - written));
        if (!skip && target != nullptr && !target->Write({output_.data(), piece})) {
            return FORMAT_OUTPUT_WRITE_FAILED;
        }
        written += piece;
        processed += piece;
        ReportProgress(processed, lastPercent, true);
    }
    if (!skip && target != nullptr && !target->Flush()) {
        return FORMAT_OUTPUT_WRITE_FAILED;
    }
    return FORMAT_OK;
}

FormatResult DataStreamReader::ReadLegacyDataStream(BufferedWriter* target, std::uint64_t size,
                                                    std::uint64_t processed, bool skip) {
    if (!Prepare() || !dcf::LegacyBlockCountFits(size, chain_->BlockSize())) {
        return FORMAT_FAILED;
    }
    const std::size_t blockSize = chain_->BlockSize();
    const std::uint64_t last = size / blockSize;
    const std::uint64_t step = last / 100 + 1;
    std::uint32_t lastPercent = 0;
    // Blocks go through the buffer in batches; progress is still told block by block.
    const std::uint64_t batchBlocks = input_.size() / blockSize;
    for (std::uint64_t first = 0; first <= last; first += batchBlocks) {
        const std::uint64_t count = std::min(batchBlocks, last + 1 - first);
        if (!ReadBlocks(static_cast<std::size_t>(count * blockSize))) {
            return FORMAT_FAILED;
        }
        for (std::uint64_t i = first; i < first + count; ++i) {
            processed += blockSize;
            if (i % step == 0) {
                ReportProgress(processed, lastPercent, false);
            }
        }
        const std::uint64_t bytes =
            first + count > last ? size - first * blockSize : count * blockSize;
        if (!skip && target != nullptr &&
            !target->Write({input_.data(), static_cast<std::size_t>(bytes)})) {
            return FORMAT_OUTPUT_WRITE_FAILED;
        }
    }
    if (!skip && target != nullptr && !target->Flush()) {
        return FORMAT_OUTPUT_WRITE_FAILED;
    }
    return FORMAT_OK;
}
