#include "archive/detail/DataStream.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

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
// Entries whose records are held ahead of their turn at most, and the bytes of their tag
// blocks: what a run of empty or tagged files may take.
constexpr std::size_t kMaxAheadEntries = 4 * kBatchChunks;
constexpr std::uint64_t kMaxAheadTagBytes = 1 << 20;

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
          const std::span<std::uint8_t> input = InputArea(at);
          slot.dataChain->DecryptBlocks(input.first(slot.dataBytes));
          slot.inflated = inflater.Run(input.first(slot.compressed), OutputArea(at), slot.produced);
      }) {
    position_ = source_.Position();
}

DataStreamReader::~DataStreamReader() {
    try {
        inflaters_.Finish();  // no worker may outlive the buffers
    } catch (...) {           // the run has its result already
    }
}

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
    return true;
}

std::span<std::uint8_t> DataStreamReader::InputArea(std::size_t slot) {
    return inputs_[slot / kBatchChunks]->Area(slot % kBatchChunks * capacity_, capacity_);
}

std::span<std::uint8_t> DataStreamReader::OutputArea(std::size_t slot) {
    return outputs_[slot / kBatchChunks]->Area(slot % kBatchChunks * capacity_, capacity_);
}

void DataStreamReader::ExpectEntries(std::uint8_t formatVersion, std::size_t count) {
    entries_ = true;
    formatVersion_ = formatVersion;
    entryCount_ = count;
    readAhead_ = dcf::UsesChunks(formatVersion);
    position_ = source_.Position();
}

bool DataStreamReader::ReadRecords(EntryHead& head, std::uint64_t tagLimit) {
    std::array<std::uint8_t, dcf::kFileHeaderSize> record{};
    if (!source_.Read(record) || !DecryptRegion(keys_, record)) {
        return false;
    }
    const std::optional<dcf::FileHeader> header = dcf::DecodeFileHeader(record);
    if (!header) {
        return false;
    }
    head.header = *header;
    head.tagBlock.clear();
    if (dcf::ReadsTagBlock(formatVersion_) && header->tagFlag != 0) {
        return header->tagBlockLength <= tagLimit &&
               ReadPromised(source_, header->tagBlockLength, head.tagBlock) &&
               DecryptRegion(keys_, head.tagBlock);
    }
    return true;
}

void DataStreamReader::BeginReading(std::uint64_t ordinal, std::uint64_t size) {
    readEntry_ = ordinal;
    chunksLeft_ = 0;
    if (!chain_) {
        return;
    }
    chain_->Restart();
    if (!readAhead_) {
        return;  // counted batch by batch from what is written
    }
    if (dcf::PieceCountFits(size, chain_->BlockSize())) {
        chunksLeft_ = dcf::PieceCount(size, chain_->BlockSize());
    } else {
        // The stream is refused when its turn comes; nothing behind it is read.
        stopResult_ = FORMAT_FAILED;
        stopAhead_ = true;
    }
}

std::optional<EntryHead> DataStreamReader::ReadEntryHead() {
    ++entry_;
    chainAtPosition_.reset();
    if (!ahead_.empty()) {
        AheadEntry next = std::move(ahead_.front());
        ahead_.pop_front();
        aheadTagBytes_ -= next.head.tagBlock.size();
        position_ = next.dataStart;
        return std::move(next.head);
    }
    if (ReadPast()) {
        GoBack();  // reading ahead stopped at these records: read them again, and tell why
    }
    if (readAhead_ && !Prepare()) {
        readAhead_ = false;
    }
    EntryHead head;
    head.start = position_;
    if (!ReadRecords(head, std::numeric_limits<std::uint64_t>::max())) {
        return std::nullopt;
    }
    position_ = source_.Position();
    BeginReading(entry_, head.header.size);
    return head;
}

bool DataStreamReader::ReadAheadRecords() {
    if (readEntry_ >= entryCount_ || ahead_.size() >= kMaxAheadEntries) {
        return false;  // the last entry, or enough held: reading goes on when these are taken
    }
    AheadEntry next;
    next.head.start = source_.Position();
    if (!ReadRecords(next.head, kMaxAheadTagBytes - aheadTagBytes_)) {
        stopResult_ = FORMAT_FAILED;
        stopAhead_ = true;
        return false;
    }
    next.dataStart = source_.Position();
    aheadTagBytes_ += next.head.tagBlock.size();
    const std::uint64_t size = next.head.header.size;
    ahead_.push_back(std::move(next));
    BeginReading(readEntry_ + 1, size);
    return true;
}

bool DataStreamReader::ReadBlocks(std::span<std::uint8_t> area, std::size_t bytes) {
    const std::span<std::uint8_t> blocks = area.first(bytes);
    if (!source_.Read(blocks)) {
        return false;
    }
    chain_->DecryptBlocks(blocks);
    return true;
}

FormatResult DataStreamReader::ReadChunk(std::size_t index) {
    const std::size_t blockSize = chain_->BlockSize();
    const std::span<std::uint8_t> area = InputArea(index);
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
    Slot& slot = slots_[index];
    slot.dataBytes =
        static_cast<std::size_t>(dcf::ChunkDataBlocks(compressed, blockSize) * blockSize);
    const std::span<std::uint8_t> data = area.first(slot.dataBytes);
    if (!source_.Read(data)) {
        return FORMAT_FAILED;
    }
    slot.dataChain = chain_;
    chain_->SkipBlocks(data);
    slot.compressed = compressed;
    return FORMAT_OK;
}

std::uint64_t DataStreamReader::ChunksStillNeeded(std::uint64_t inHand) const {
    // Were every chunk as long as a chunk can be, the entry would still need this many: no
    // chunk read up to there lies behind the entry's stream.
    const std::uint64_t rest = entrySize_ - entryWritten_;
    const std::uint64_t needed = (rest + capacity_ - 1) / capacity_;
    return needed > inHand ? needed - inHand : 0;
}

std::size_t DataStreamReader::ChunksInHand() const {
    const Batch& writing = batches_[current_];
    std::size_t inHand = writing.first + writing.count - cursor_;
    if (inflaters_.Busy()) {
        inHand += batches_[1 - current_].count;
    }
    return inHand;
}

void DataStreamReader::ReadBatch(Batch& batch) {
    batch.count = 0;
    if (!readAhead_ && readEntry_ == entry_) {
        chunksLeft_ = ChunksStillNeeded(ChunksInHand());
    }
    while (batch.count < kBatchChunks && stopResult_ == FORMAT_OK) {
        if (chunksLeft_ == 0) {
            if (!readAhead_ || !ReadAheadRecords()) {
                break;
            }
            continue;
        }
        const std::size_t index = batch.first + batch.count;
        if (const FormatResult result = ReadChunk(index); result != FORMAT_OK) {
            stopResult_ = result;
            stopAhead_ = readAhead_;
            break;
        }
        --chunksLeft_;
        Slot& slot = slots_[index];
        slot.entry = readEntry_;
        slot.last = readAhead_ && chunksLeft_ == 0;
        slot.end = source_.Position();
        slot.chain = chain_;
        ++batch.count;
    }
    batch.read = stopResult_;
    batch.ahead = stopAhead_;
}

void DataStreamReader::StartInflating(const Batch& batch) {
    // The job's indices count from the batch's first slot.
    inflateFirst_ = batch.first;
    inflaters_.Start(batch.count, inflate_);
}

void DataStreamReader::Advance() {
    Batch& done = batches_[current_];
    done.count = 0;
    cursor_ = done.first;
    const std::size_t next = 1 - current_;
    if (!inflaters_.Busy()) {
        Batch& first = batches_[next];
        ReadBatch(first);
        const bool more =
            stopResult_ == FORMAT_OK && (readAhead_ ? chunksLeft_ > 0 || readEntry_ < entryCount_
                                                    : ChunksStillNeeded(first.count) > 0);
        if (!more) {
            // Nothing to read meanwhile: inflate at once, with the caller (a lone chunk of a
            // small file wakes no thread).
            if (first.count > 0) {
                inflateFirst_ = first.first;
                inflaters_.ForEach(first.count, inflate_);
            }
            current_ = next;
            cursor_ = first.first;
            return;
        }
        StartInflating(first);
    }
    ReadBatch(done);  // the batch after the next, read while the next inflates
    inflaters_.Finish();
    current_ = next;
    cursor_ = batches_[next].first;
    if (done.count > 0) {
        StartInflating(done);
    }
}

void DataStreamReader::DropBatches() {
    inflaters_.Finish();
    for (Batch& batch : batches_) {
        batch.count = 0;
        batch.read = FORMAT_OK;
        batch.ahead = false;
    }
    cursor_ = batches_[current_].first;
}

bool DataStreamReader::ReadPast() {
    return stopResult_ != FORMAT_OK || source_.Position() != position_;
}

void DataStreamReader::GoBack() {
    DropBatches();
    ahead_.clear();
    aheadTagBytes_ = 0;
    stopResult_ = FORMAT_OK;
    stopAhead_ = false;
    // A writer that cut its pieces otherwise may well do it again: read as it comes from now.
    readAhead_ = false;
    readEntry_ = entry_;
    chunksLeft_ = 0;
    source_.SeekTo(position_);  // a failed seek fails the next read
    if (chain_) {
        if (chainAtPosition_) {
            *chain_ = *chainAtPosition_;
        } else {
            chain_->Restart();
        }
    }
}

DataStreamReader::Slot* DataStreamReader::NextSlot(FormatResult& result) {
    result = FORMAT_OK;
    for (;;) {
        const Batch& writing = batches_[current_];
        if (cursor_ < writing.first + writing.count) {
            Slot& slot = slots_[cursor_];
            if (slot.entry != entry_) {
                return nullptr;  // the entry's chunks ran out before its end
            }
            ++cursor_;
            return &slot;
        }
        if (writing.read != FORMAT_OK) {
            // Met while reading ahead, the failure may lie behind the entry's stream.
            result = writing.ahead ? FORMAT_OK : writing.read;
            return nullptr;
        }
        Advance();
        const Batch& now = batches_[current_];
        if (now.count == 0 && now.read == FORMAT_OK) {
            result = readAhead_ ? FORMAT_OK : FORMAT_FAILED;  // nothing more could be read
            return nullptr;
        }
    }
}

void DataStreamReader::ReportProgress(std::uint64_t processed, std::uint32_t& lastPercent,
                                      bool onlyRises) {
    const std::optional<std::uint32_t> percent = ProgressPercent(processed, total_);
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
    if (!entries_) {
        // Each stream is the next entry, read from where the source stands.
        DropBatches();
        ++entry_;
        position_ = source_.Position();
        chainAtPosition_.reset();
        stopResult_ = FORMAT_OK;
    }
    if (size == 0) {
        return FORMAT_OK;
    }
    if (!Prepare() || !dcf::PieceCountFits(size, chain_->BlockSize())) {
        return FORMAT_FAILED;
    }
    if (!entries_) {
        BeginReading(entry_, size);
    }
    entrySize_ = size;
    entryWritten_ = 0;
    Entry entry{target, processed};
    const bool write = !skip && target != nullptr;
    while (entryWritten_ < size) {
        FormatResult stopped = FORMAT_OK;
        const Slot* slot = NextSlot(stopped);
        if (slot == nullptr) {
            if (stopped != FORMAT_OK) {
                return stopped;
            }
            GoBack();  // read ahead wrongly: read this entry's rest as it comes
            continue;
        }
        // Asked again before each chunk: it may have been read long before.
        if (settings_.IsCancelled()) {
            return FORMAT_CANCELLED;
        }
        const auto index = static_cast<std::size_t>(slot - slots_.data());
        if (!slot->inflated) {
            return FORMAT_FAILED;
        }
        const auto piece =
            static_cast<std::size_t>(std::min<std::uint64_t>(slot->produced, size - entryWritten_));
        if (write && !target->Write(OutputArea(index).first(piece))) {
            return FORMAT_OUTPUT_WRITE_FAILED;
        }
        entryWritten_ += piece;
        entry.processed += piece;
        ReportProgress(entry.processed, entry.lastPercent, true);
        position_ = slot->end;
        chainAtPosition_ = slot->chain;
        const bool ended = entryWritten_ == size;
        if (ended ? !slot->last && ReadPast() : slot->last) {
            // The stream ends elsewhere than its pieces foretold: what was read behind this
            // chunk is not what it was taken for.
            GoBack();
        }
    }
    if (write && !target->Flush()) {
        return FORMAT_OUTPUT_WRITE_FAILED;
    }
    return FORMAT_OK;
}

FormatResult DataStreamReader::ReadLegacyDataStream(BufferedWriter* target, std::uint64_t size,
                                                    std::uint64_t processed, bool skip) {
    if (!Prepare() || !dcf::LegacyBlockCountFits(size, chain_->BlockSize())) {
        return FORMAT_FAILED;
    }
    chain_->Restart();
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
    position_ = source_.Position();
    if (!skip && target != nullptr && !target->Flush()) {
        return FORMAT_OUTPUT_WRITE_FAILED;
    }
    return FORMAT_OK;
}
