#include "archive/DataStream.h"

#include <algorithm>

#include "archive/DcfRecords.h"

namespace {

// Chunks inflated together at most: enough to share among a few workers, few enough to keep
// the buffers small (2·64 buffers of 1280·B bytes).
constexpr std::size_t kBatchChunks = 64;

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
                                   const DCCArchiveUserSettings& settings, std::uint64_t total,
                                   unsigned workers)
    : source_(source),
      keys_(keys),
      settings_(settings),
      total_(total),
      inflaters_(ChunkCodec::Direction::Inflate, workers) {}

bool DataStreamReader::Prepare() {
    if (!chain_) {
        chain_ = crypto::ChunkChain::Create(keys_.SuiteId, keys_.KeySchedule, keys_.IvArea);
        if (!chain_ || !inflaters_.Ready()) {
            chain_.reset();
            return false;
        }
        capacity_ = dcf::kMaxChunkBlocks * chain_->BlockSize();
        inputs_.reset(new std::uint8_t[kBatchChunks * capacity_]);
        outputs_.reset(new std::uint8_t[kBatchChunks * capacity_]);
        slots_.resize(kBatchChunks);
    }
    chain_->Restart();
    return true;
}

std::span<std::uint8_t> DataStreamReader::InputArea(std::size_t slot) {
    return {inputs_.get() + slot * capacity_, capacity_};
}

std::span<std::uint8_t> DataStreamReader::OutputArea(std::size_t slot) {
    return {outputs_.get() + slot * capacity_, capacity_};
}

bool DataStreamReader::ReadBlocks(std::span<std::uint8_t> area, std::size_t bytes) {
    const std::span<std::uint8_t> blocks = area.first(bytes);
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

FormatResult DataStreamReader::ReadBatch(std::size_t limit, std::size_t& count) {
    const std::size_t blockSize = chain_->BlockSize();
    for (count = 0; count < limit; ++count) {
        const std::span<std::uint8_t> area = InputArea(count);
        std::uint32_t compressed = 0;
        while (compressed == 0) {  // a zero length keeps the next block a length block
            if (settings_.IsCancelled()) {
                return FORMAT_CANCELLED;
            }
            if (!ReadBlocks(area, blockSize)) {
                return FORMAT_FAILED;
            }
            compressed = dcf::DecodeChunkLength(area.first(blockSize));
        }
        if (compressed >= capacity_) {
            return FORMAT_FAILED;
        }
        if (settings_.IsCancelled()) {
            return FORMAT_CANCELLED;
        }
        if (!ReadBlocks(area, dcf::ChunkDataBlocks(compressed, blockSize) * blockSize)) {
            return FORMAT_FAILED;
        }
        slots_[count].compressed = compressed;
    }
    return FORMAT_OK;
}

void DataStreamReader::InflateBatch(std::size_t count) {
    inflaters_.ForEach(count, [this](ChunkCodec& inflater, std::size_t index) {
        Slot& slot = slots_[index];
        slot.inflated =
            inflater.Run(InputArea(index).first(slot.compressed), OutputArea(index), slot.produced);
    });
}

FormatResult DataStreamReader::WriteBatch(Entry& entry, std::size_t count, bool skip) {
    for (std::size_t index = 0; index < count; ++index) {
        if (index > 0 && settings_.IsCancelled()) {
            return FORMAT_CANCELLED;
        }
        const Slot& slot = slots_[index];
        if (!slot.inflated) {
            return FORMAT_FAILED;
        }
        const auto piece = static_cast<std::size_t>(
            std::min<std::uint64_t>(slot.produced, entry.size - entry.written));
        if (!skip && entry.target != nullptr &&
            !entry.target->Write(OutputArea(index).first(piece))) {
            return FORMAT_OUTPUT_WRITE_FAILED;
        }
        entry.written += piece;
        entry.processed += piece;
        ReportProgress(entry.processed, entry.lastPercent, true);
    }
    return FORMAT_OK;
}

FormatResult DataStreamReader::ReadDataStream(BufferedWriter* target, std::uint64_t size,
                                              std::uint64_t processed, bool skip) {
    if (size == 0) {
        return FORMAT_OK;
    }
    if (!Prepare() || !dcf::PieceCountFits(size, chain_->BlockSize())) {
        return FORMAT_FAILED;
    }
    Entry entry{target, size, processed};
    while (entry.written < size) {
        // Were every chunk as long as a chunk can be, all but the batch's last would still end
        // before the entry does: no chunk of a batch lies behind the entry's stream.
        const std::uint64_t rest = size - entry.written;
        const auto limit = static_cast<std::size_t>(
            std::min<std::uint64_t>(kBatchChunks, (rest + capacity_ - 1) / capacity_));
        std::size_t count = 0;
        const FormatResult read = ReadBatch(limit, count);
        InflateBatch(count);
        const FormatResult written = WriteBatch(entry, count, skip);
        if (written != FORMAT_OK) {
            return written;
        }
        if (read != FORMAT_OK) {
            return read;
        }
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
    // Blocks go through one chunk buffer in batches; progress is still told block by block.
    const std::span<std::uint8_t> area = InputArea(0);
    const std::uint64_t batchBlocks = area.size() / blockSize;
    for (std::uint64_t first = 0; first <= last; first += batchBlocks) {
        const std::uint64_t count = std::min(batchBlocks, last + 1 - first);
        if (!ReadBlocks(area, static_cast<std::size_t>(count * blockSize))) {
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
            !target->Write(area.first(static_cast<std::size_t>(bytes)))) {
            return FORMAT_OUTPUT_WRITE_FAILED;
        }
    }
    if (!skip && target != nullptr && !target->Flush()) {
        return FORMAT_OUTPUT_WRITE_FAILED;
    }
    return FORMAT_OK;
}
