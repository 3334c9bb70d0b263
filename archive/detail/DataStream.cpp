#include "archive/detail/DataStream.h"

#include <algorithm>

#include "archive/detail/DcfRecords.h"

namespace {

// Chunks inflated together at most: enough to share among a few workers, few enough to keep
// the buffers small (two sets of 2·128 buffers of 1280·B bytes, 10 MiB with 16-byte blocks).
// Fuzzing takes small batches: their edges come often, and the sanitizer's bookkeeping of large
// buffers does not dominate each run.
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
constexpr std::size_t kBatchChunks = 4;
#else
constexpr std::size_t kBatchChunks = 128;
#endif
constexpr std::size_t kSets = 2;

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
      inflaters_(ChunkCodec::Direction::Inflate, workers),
      inflate_([this](ChunkCodec& inflater, std::size_t index) {
          const std::size_t at = inflateFirst_ + index;
          Slot& slot = slots_[at];
          slot.inflated =
              inflater.Run(InputArea(at).first(slot.compressed), OutputArea(at), slot.produced);
      }) {}

bool DataStreamReader::Prepare() {
    if (!chain_) {
        chain_ = crypto::ChunkChain::Create(keys_.SuiteId, keys_.KeySchedule, keys_.IvArea);
        if (!chain_ || !inflaters_.Ready()) {
            chain_.reset();
            return false;
        }
        capacity_ = dcf::kMaxChunkBlocks * chain_->BlockSize();
        for (std::size_t set = 0; set < kSets; ++set) {
            inputs_[set] = std::make_unique<Zelmarik::WipingBytes>(kBatchChunks * capacity_);
            outputs_[set] = std::make_unique<Zelmarik::WipingBytes>(kBatchChunks * capacity_);
        }
        slots_.resize(kSets * kBatchChunks);
        batches_[1].first = kBatchChunks;
    }
    chain_->Restart();
    return true;
}

std::span<std::uint8_t> DataStreamReader::InputArea(std::size_t slot) {
    return inputs_[slot / kBatchChunks]->Area(slot % kBatchChunks * capacity_, capacity_);
}

std::span<std::uint8_t> DataStreamReader::OutputArea(std::size_t slot) {
    return outputs_[slot / kBatchChunks]->Area(slot % kBatchChunks * capacity_, capacity_);
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

std::uint64_t DataStreamReader::ChunksStillNeeded(const Entry& entry, const Batch* inFlight) const {
    // Were every chunk as long as a chunk can be, the entry would still need this many: no
    // chunk read up to there lies behind the entry's stream.
    const std::uint64_t rest = entry.size - entry.written;
    const std::uint64_t needed = (rest + capacity_ - 1) / capacity_;
    const std::uint64_t inHand = inFlight != nullptr ? inFlight->count : 0;
    return needed > inHand ? needed - inHand : 0;
}

void DataStreamReader::ReadBatch(Batch& batch, std::uint64_t limit) {
    const std::size_t blockSize = chain_->BlockSize();
    batch.count = 0;
    batch.read = FORMAT_OK;
    const std::size_t wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(kBatchChunks, limit));
    for (; batch.count < wanted; ++batch.count) {
        const std::size_t index = batch.first + batch.count;
        const std::span<std::uint8_t> area = InputArea(index);
        std::uint32_t compressed = 0;
        while (compressed == 0) {  // a zero length keeps the next block a length block
            if (settings_.IsCancelled()) {
                batch.read = FORMAT_CANCELLED;
                return;
            }
            if (!ReadBlocks(area, blockSize)) {
                batch.read = FORMAT_FAILED;
                return;
            }
            compressed = dcf::DecodeChunkLength(area.first(blockSize));
        }
        if (compressed >= capacity_) {
            batch.read = FORMAT_FAILED;
            return;
        }
        if (settings_.IsCancelled()) {
            batch.read = FORMAT_CANCELLED;
            return;
        }
        if (!ReadBlocks(area, dcf::ChunkDataBlocks(compressed, blockSize) * blockSize)) {
            batch.read = FORMAT_FAILED;
            return;
        }
        slots_[index].compressed = compressed;
    }
}

void DataStreamReader::StartInflating(const Batch& batch, bool callerBusy) {
    // The job's indices count from the batch's first slot.
    inflateFirst_ = batch.first;
    if (batch.count == 1 && !callerBusy) {
        inflaters_.ForEach(1, inflate_);  // a lone chunk of a small file: no thread to wake
        return;
    }
    inflaters_.Start(batch.count, inflate_);
    inflating_ = true;
}

void DataStreamReader::FinishInflating() {
    if (inflating_) {
        inflating_ = false;
        inflaters_.Finish();
    }
}

FormatResult DataStreamReader::WriteBatch(Entry& entry, const Batch& batch, bool skip) {
    for (std::size_t index = batch.first; index < batch.first + batch.count; ++index) {
        if (index > batch.first && settings_.IsCancelled()) {
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
    return batch.read;
}

FormatResult DataStreamReader::ReadDataStream(BufferedWriter* target, std::uint64_t size,
                                              std::uint64_t processed, bool skip) {
    if (size == 0) {
        return FORMAT_OK;
    }
    if (!Prepare() || !dcf::PieceCountFits(size, chain_->BlockSize())) {
        return FORMAT_FAILED;
    }
    // Whichever way the stream ends, no batch is left with the workers.
    struct InflatingGuard {
        DataStreamReader& reader;
        ~InflatingGuard() {
            try {
                reader.FinishInflating();
            } catch (...) {  // the stream has its result already
            }
        }
    } guard{*this};
    Entry entry{target, size, processed};
    const Batch* written = nullptr;  // inflating, to be written next
    for (std::size_t set = 0;; set = 1 - set) {
        Batch& batch = batches_[set];
        batch.count = 0;
        batch.read = FORMAT_OK;
        // Nothing is read behind a batch whose reading failed.
        const bool readable = written == nullptr || written->read == FORMAT_OK;
        if (const std::uint64_t limit = ChunksStillNeeded(entry, written); readable && limit > 0) {
            ReadBatch(batch, limit);
        }
        FinishInflating();
        if (batch.count > 0) {
            StartInflating(batch, written != nullptr);
        }
        if (written != nullptr) {
            const FormatResult result = WriteBatch(entry, *written, skip);
            if (result != FORMAT_OK) {
                return result;
            }
        }
        if (batch.count == 0) {
            if (batch.read != FORMAT_OK) {
                return batch.read;
            }
            if (entry.written >= size) {
                break;
            }
        }
        written = batch.count > 0 ? &batch : nullptr;
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
