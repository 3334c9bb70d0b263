#include "archive/DataStreamWriter.h"

#include <algorithm>
#include <cstring>

#include "archive/DcfRecords.h"

namespace {

// Source bytes read with one call: many pieces at a time.
constexpr std::size_t kSourceReadSize = 256 * 1024;

}  // namespace

DataStreamWriter::DataStreamWriter(BufferedWriter& target, const KeyContext& keys,
                                   const DCCArchiveUserSettings& settings, std::uint64_t total)
    : target_(target), keys_(keys), settings_(settings), total_(total) {}

bool DataStreamWriter::Prepare() {
    if (!chain_) {
        chain_ = crypto::ChunkChain::Create(keys_.SuiteId, keys_.KeySchedule, keys_.IvArea);
        if (!chain_ || !deflater_.Ready()) {
            chain_.reset();
            return false;
        }
        const std::size_t pieceSize = dcf::PieceSize(chain_->BlockSize());
        sourceBuffer_.resize(std::max(kSourceReadSize, pieceSize));
        piece_.resize(pieceSize);
        // The length block, 2·P compressed bytes and the block they may gain.
        chunk_.resize(chain_->BlockSize() + 2 * pieceSize + chain_->BlockSize());
    }
    chain_->Restart();
    sourceBegin_ = 0;
    sourceEnd_ = 0;
    return true;
}

bool DataStreamWriter::ReadPiece(platform::File& source, std::size_t length,
                                 std::uint64_t remaining) {
    std::size_t filled = 0;
    while (filled < length) {
        if (sourceBegin_ == sourceEnd_) {
            const auto want =
                static_cast<std::size_t>(std::min<std::uint64_t>(sourceBuffer_.size(), remaining));
            std::size_t got = 0;
            if (source.Read(sourceBuffer_.data(), want, got) != platform::kErrorSuccess) {
                return false;
            }
            if (got == 0) {
                // The file shrank since it was measured: its entry keeps the measured size.
                std::fill(piece_.begin() + static_cast<std::ptrdiff_t>(filled),
                          piece_.begin() + static_cast<std::ptrdiff_t>(length), std::uint8_t{0});
                return true;
            }
            sourceBegin_ = 0;
            sourceEnd_ = got;
        }
        const std::size_t take = std::min(length - filled, sourceEnd_ - sourceBegin_);
        std::memcpy(piece_.data() + filled, sourceBuffer_.data() + sourceBegin_, take);
        sourceBegin_ += take;
        filled += take;
        remaining -= take;
    }
    return true;
}

void DataStreamWriter::ReportProgress(std::uint64_t processed) {
    if (settings_.onProgress == nullptr || total_ == 0) {
        return;
    }
    const double percent = static_cast<double>(processed) / static_cast<double>(total_) * 100.0;
    settings_.onProgress(static_cast<std::uint32_t>(std::clamp(percent, 0.0, 100.0)),
                         settings_.Context(CALLBACK_PROGRESS));
}

FormatResult DataStreamWriter::WriteDataStream(platform::File& source, std::uint64_t size,
                                               std::uint64_t processed) {
    if (size == 0) {
        return FORMAT_OK;
    }
    if (!Prepare() || !dcf::PieceCountFits(size, chain_->BlockSize())) {
        return FORMAT_FAILED;
    }
    const std::size_t blockSize = chain_->BlockSize();
    const std::size_t pieceSize = piece_.size();
    const std::uint64_t wholePieces = size / pieceSize;
    const std::uint64_t step = wholePieces / 100 + 1;
    const std::span<std::uint8_t> compressedArea(chunk_.data() + blockSize, 2 * pieceSize);
    for (std::uint64_t i = 0; i <= wholePieces; ++i) {
        const std::size_t length =
            i < wholePieces ? pieceSize : static_cast<std::size_t>(size - wholePieces * pieceSize);
        processed += length;
        if (i % step == 0) {
            ReportProgress(processed);
        }
        if (length == 0) {
            break;  // a size at a multiple of the piece has no short last piece
        }
        if (!ReadPiece(source, length, size - i * pieceSize)) {
            return FORMAT_SOURCE_OPEN_FAILED;
        }
        if (settings_.IsCancelled()) {
            return FORMAT_CANCELLED;
        }
        std::size_t compressed = 0;
        if (!deflater_.Deflate({piece_.data(), length}, compressedArea, compressed)) {
            return FORMAT_FAILED;
        }
        const auto stored = static_cast<std::size_t>(dcf::ChunkStoredSize(compressed, blockSize));
        std::fill(chunk_.begin() + static_cast<std::ptrdiff_t>(blockSize + compressed),
                  chunk_.begin() + static_cast<std::ptrdiff_t>(stored), std::uint8_t{0});
        dcf::EncodeChunkLength(static_cast<std::uint32_t>(compressed), {chunk_.data(), blockSize});
        const std::span<std::uint8_t> chunk(chunk_.data(), stored);
        chain_->EncryptBlocks(chunk);
        if (!target_.Write(chunk)) {
            return FORMAT_WRITE_FAILED;
        }
    }
    return FORMAT_OK;
}
