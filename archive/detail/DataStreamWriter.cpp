#include "archive/detail/DataStreamWriter.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "archive/detail/DcfRecords.h"

namespace {

// Source bytes read with one call: many pieces at a time.
constexpr std::size_t kSourceReadSize = 256 * 1024;
// Pieces deflated together: enough to share among a few workers, few enough to keep the
// buffers small (two sets of about 400 KiB with 16-byte blocks).
constexpr std::size_t kBatchPieces = 64;
constexpr std::size_t kSets = 2;

}  // namespace

DataStreamWriter::DataStreamWriter(BufferedWriter& target, const KeyContext& keys,
                                   const DCCArchiveUserSettings& settings, std::uint64_t total,
                                   unsigned workers)
    : target_(target),
      keys_(keys),
      settings_(settings),
      total_(total),
      deflaters_(ChunkCodec::Direction::Deflate, workers),
      deflate_([this](ChunkCodec& deflater, std::size_t index) {
          const std::size_t at = deflateFirst_ + index;
          Slot& slot = slots_[at];
          slot.deflated = deflater.Run(PieceArea(at).first(slot.length),
                                       ChunkArea(at).subspan(chain_->BlockSize(), 2 * pieceSize_),
                                       slot.compressed);
      }) {}

DataStreamWriter::~DataStreamWriter() {
    try {
        deflaters_.Finish();  // no worker may outlive the buffers
    } catch (...) {           // the run has its result already
    }
}

bool DataStreamWriter::Prepare() {
    if (!chain_) {
        chain_ = crypto::ChunkChain::Create(keys_.SuiteId, keys_.KeySchedule, keys_.IvArea);
        if (!chain_ || !deflaters_.Ready()) {
            chain_.reset();
            return false;
        }
        const std::size_t blockSize = chain_->BlockSize();
        pieceSize_ = dcf::PieceSize(blockSize);
        chunkCapacity_ = blockSize + 2 * pieceSize_ + blockSize;
        sourceBuffer_.resize(std::max(kSourceReadSize, pieceSize_));
        pieces_.resize(kSets * kBatchPieces * pieceSize_);
        chunks_.resize(kSets * kBatchPieces * chunkCapacity_);
        slots_.resize(kSets * kBatchPieces);
    }
    return true;
}

std::span<std::uint8_t> DataStreamWriter::PieceArea(std::size_t slot) {
    return {pieces_.data() + slot * pieceSize_, pieceSize_};
}

std::span<std::uint8_t> DataStreamWriter::ChunkArea(std::size_t slot) {
    return {chunks_.data() + slot * chunkCapacity_, chunkCapacity_};
}

bool DataStreamWriter::ReadPiece(platform::File& source, std::span<std::uint8_t> piece,
                                 std::uint64_t remaining) {
    std::size_t filled = 0;
    while (filled < piece.size()) {
        if (sourceBegin_ == sourceEnd_) {
            const auto want =
                static_cast<std::size_t>(std::min<std::uint64_t>(sourceBuffer_.size(), remaining));
            std::size_t got = 0;
            if (source.Read(sourceBuffer_.data(), want, got) != platform::kErrorSuccess) {
                return false;
            }
            if (got == 0) {
                // The file shrank since it was measured: its entry keeps the measured size.
                std::fill(piece.begin() + static_cast<std::ptrdiff_t>(filled), piece.end(),
                          std::uint8_t{0});
                return true;
            }
            sourceBegin_ = 0;
            sourceEnd_ = got;
        }
        const std::size_t take = std::min(piece.size() - filled, sourceEnd_ - sourceBegin_);
        std::memcpy(piece.data() + filled, sourceBuffer_.data() + sourceBegin_, take);
        sourceBegin_ += take;
        filled += take;
        remaining -= take;
    }
    return true;
}

void DataStreamWriter::ReportProgress(std::uint64_t processed) {
    const std::optional<std::uint32_t> percent = ProgressPercent(processed, total_);
    if (settings_.onProgress != nullptr && percent) {
        settings_.onProgress(*percent, settings_.Context(CALLBACK_PROGRESS));
    }
}

FormatResult DataStreamWriter::ReadPieces(Entry& entry) {
    while (slotsUsed_ < kBatchPieces && entry.next <= entry.wholePieces) {
        const std::uint64_t i = entry.next++;
        const std::size_t length = i < entry.wholePieces
                                       ? pieceSize_
                                       : static_cast<std::size_t>(entry.size - i * pieceSize_);
        entry.processed += length;
        if (i % entry.step == 0) {
            ReportProgress(entry.processed);
        }
        if (length == 0) {
            break;  // a size at a multiple of the piece has no short last piece
        }
        const std::size_t slot = first_ + slotsUsed_;
        if (!ReadPiece(entry.source, PieceArea(slot).first(length), entry.size - i * pieceSize_)) {
            return FORMAT_SOURCE_OPEN_FAILED;
        }
        if (settings_.IsCancelled()) {
            return FORMAT_CANCELLED;
        }
        slots_[slot].length = length;
        ++slotsUsed_;
        Item item;
        item.slot = slot;
        item.firstChunk = i == 0;
        queue_.push_back(std::move(item));
    }
    return FORMAT_OK;
}

FormatResult DataStreamWriter::PassBatch() {
    deflaters_.Finish();
    std::vector<Item> deflated = std::exchange(deflating_, std::move(queue_));
    queue_.clear();
    deflateFirst_ = first_;
    deflaters_.Start(slotsUsed_, deflate_);
    first_ = first_ == 0 ? kBatchPieces : 0;  // the set of the batch written now
    slotsUsed_ = 0;
    return WriteItems(deflated);
}

FormatResult DataStreamWriter::WriteItems(const std::vector<Item>& items) {
    for (const Item& item : items) {
        if (!item.slot) {
            if (!target_.Write(item.record)) {
                return FORMAT_WRITE_FAILED;
            }
            continue;
        }
        const Slot& slot = slots_[*item.slot];
        if (!slot.deflated) {
            return FORMAT_FAILED;
        }
        const std::size_t blockSize = chain_->BlockSize();
        const auto stored =
            static_cast<std::size_t>(dcf::ChunkStoredSize(slot.compressed, blockSize));
        const std::span<std::uint8_t> chunk = ChunkArea(*item.slot).first(stored);
        std::fill(chunk.begin() + static_cast<std::ptrdiff_t>(blockSize + slot.compressed),
                  chunk.end(), std::uint8_t{0});
        dcf::EncodeChunkLength(static_cast<std::uint32_t>(slot.compressed), chunk.first(blockSize));
        if (item.firstChunk) {
            chain_->Restart();
        }
        chain_->EncryptBlocks(chunk);
        if (!target_.Write(chunk)) {
            return FORMAT_WRITE_FAILED;
        }
    }
    return FORMAT_OK;
}

void DataStreamWriter::DropQueue() {
    deflaters_.Finish();
    queue_.clear();
    deflating_.clear();
    slotsUsed_ = 0;
}

void DataStreamWriter::QueueRecord(std::vector<std::uint8_t> record) {
    Item item;
    item.record = std::move(record);
    queue_.push_back(std::move(item));
}

FormatResult DataStreamWriter::Flush() {
    deflaters_.Finish();
    FormatResult result = WriteItems(deflating_);
    if (result == FORMAT_OK && !queue_.empty()) {
        if (slotsUsed_ > 0) {
            deflateFirst_ = first_;
            deflaters_.ForEach(slotsUsed_, deflate_);
        }
        result = WriteItems(queue_);
    }
    DropQueue();
    return result;
}

FormatResult DataStreamWriter::QueueDataStream(platform::File& source, std::uint64_t size,
                                               std::uint64_t processed) {
    if (size == 0) {
        return FORMAT_OK;
    }
    if (!Prepare() || !dcf::PieceCountFits(size, chain_->BlockSize())) {
        DropQueue();
        return FORMAT_FAILED;
    }
    sourceBegin_ = 0;
    sourceEnd_ = 0;
    const std::uint64_t wholePieces = size / pieceSize_;
    Entry entry{source, size, wholePieces, wholePieces / 100 + 1, processed};
    for (;;) {
        FormatResult result = ReadPieces(entry);
        if (result == FORMAT_OK && slotsUsed_ == kBatchPieces) {
            result = PassBatch();
        }
        if (result != FORMAT_OK) {
            DropQueue();
            return result;
        }
        if (entry.next > entry.wholePieces) {
            return FORMAT_OK;
        }
    }
}

FormatResult DataStreamWriter::WriteDataStream(platform::File& source, std::uint64_t size,
                                               std::uint64_t processed) {
    const FormatResult queued = QueueDataStream(source, size, processed);
    return queued != FORMAT_OK ? queued : Flush();
}
