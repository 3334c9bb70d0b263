#include "tests/fuzz/HostileImage.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "archive/detail/DcfRecords.h"
#include "archive/detail/KeyContext.h"
#include "archive/detail/SfxTrailer.h"
#include "crypto/ChunkChain.h"

namespace fuzz {

namespace {

tests::ImageSettings SettingsFor(const std::u16string& password) {
    tests::ImageSettings settings;
    settings.password = password;
    return settings;
}

// Text that compresses well, so that one file gives several small chunks.
Bytes Text(std::size_t size) {
    const std::string line = "The quick brown fox jumps over the lazy dog 0123456789.\n";
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>(line[i % line.size()] + i / 997 % 3);
    }
    return bytes;
}

// One command of the edit sequence; the reader takes what is there and zeros past the end.
class Commands {
public:
    explicit Commands(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    bool Done() const { return position_ >= bytes_.size(); }
    std::uint8_t Byte() { return Done() ? 0 : bytes_[position_++]; }
    std::span<const std::uint8_t> Take(std::size_t count) {
        count = std::min(count, bytes_.size() - position_);
        const auto taken = bytes_.subspan(position_, count);
        position_ += count;
        return taken;
    }

private:
    std::span<const std::uint8_t> bytes_;
    std::size_t position_ = 0;
};

enum Op : std::uint8_t { Overwrite, Insert, Erase, Cut, OpCount };

}  // namespace

HostileImage::HostileImage(const std::u16string& password) : builder_(SettingsFor(password)) {
    const Bytes archiveCategories = tests::OneCategoryBlock();
    builder_.Preamble(archiveCategories);
    builder_.KeyBlock();
    const Bytes& plainHead = builder_.Image();
    const std::size_t keyBlockStart = builder_.Borders().at(1);
    Add(Protection::Plain, Bytes(plainHead.begin(), plainHead.begin() + keyBlockStart));
    Add(Protection::Plain, Bytes(plainHead.begin() + keyBlockStart, plainHead.end()));

    const std::vector<std::u16string> folders = {u"\\docs", u"\\docs\\sub"};
    const std::vector<std::u16string> files = {u"\\docs\\a.txt", u"\\docs\\sub\\empty.txt",
                                               u"\\b.bin"};
    const Bytes a = Text(2 * dcf::PieceSize(builder_.BlockSize()) + 500);
    const Bytes b = tests::Noise(100, 7);
    const Bytes names = dcf::EncodeNameBlock(folders, files);

    Bytes folderHeader(dcf::kFolderHeaderSize);
    dcf::EncodeFolderHeader(
        {dcf::kFormatVersion, static_cast<std::uint32_t>(files.size()),
         static_cast<std::uint32_t>(folders.size()), a.size() + b.size(), names.size()},
        std::span<std::uint8_t, dcf::kFolderHeaderSize>(folderHeader));
    Add(Protection::Region, std::move(folderHeader));
    Bytes endOfHeader(dcf::kEndOfHeaderSize);
    dcf::EncodeEndOfHeader(std::span<std::uint8_t, dcf::kEndOfHeaderSize>(endOfHeader));
    Add(Protection::Region, std::move(endOfHeader));
    Add(Protection::Region, names);

    AddEntry(a, archiveCategories);
    AddEntry({}, {});
    AddEntry(b, archiveCategories);
}

void HostileImage::Add(Protection protection, Bytes plain, bool startsStream) {
    records_.push_back({protection, startsStream, std::move(plain)});
}

void HostileImage::AddEntry(const Bytes& content, const Bytes& categoryBlock) {
    Bytes header(dcf::kFileHeaderSize);
    dcf::EncodeFileHeader({content.size(), static_cast<std::uint8_t>(categoryBlock.empty() ? 0 : 1),
                           dcf::RaisedTagBlockLength(categoryBlock.size())},
                          std::span<std::uint8_t, dcf::kFileHeaderSize>(header));
    Add(Protection::Region, std::move(header));
    if (!categoryBlock.empty()) {
        Add(Protection::Region, dcf::EncodeTagBlock(categoryBlock));
    }
    // Each chunk as two records, its length block and its data blocks, so that an edit can
    // aim at either.
    const std::size_t blockSize = builder_.BlockSize();
    const std::size_t piece = dcf::PieceSize(blockSize);
    bool first = true;
    for (std::size_t offset = 0; offset < content.size(); offset += piece) {
        const Bytes compressed = tests::Compress(
            std::span(content).subspan(offset, std::min(piece, content.size() - offset)));
        Bytes lengthBlock(blockSize);
        dcf::EncodeChunkLength(static_cast<std::uint32_t>(compressed.size()), lengthBlock);
        Add(Protection::Stream, std::move(lengthBlock), first);
        Bytes data = compressed;
        data.resize(dcf::ChunkDataBlocks(compressed.size(), blockSize) * blockSize, 0);
        Add(Protection::Stream, std::move(data));
        first = false;
    }
}

Bytes HostileImage::Encrypt(std::vector<Record> records, std::vector<std::size_t>& starts) const {
    const KeyContext& keys = builder_.Keys();
    auto chain = crypto::ChunkChain::Create(keys.SuiteId, keys.KeySchedule, keys.IvArea);
    if (!chain) {
        throw std::runtime_error("suite without a chunk chain");
    }
    Bytes image;
    for (Record& record : records) {
        switch (record.protection) {
            case Protection::Plain:
                break;
            case Protection::Region:
                if (!EncryptRegion(keys, record.plain)) {
                    throw std::runtime_error("region encryption failed");
                }
                break;
            case Protection::Stream:
                if (record.startsStream) {
                    chain->Restart();
                }
                chain->EncryptBlocks(record.plain);
                break;
        }
        starts.push_back(image.size());
        image.insert(image.end(), record.plain.begin(), record.plain.end());
    }
    return image;
}

Bytes HostileImage::Assemble(std::span<const std::uint8_t> edits) const {
    std::vector<Record> records = records_;
    std::size_t cutRecord = records.size();
    std::size_t cutOffset = 0;
    Commands commands(edits);
    while (!commands.Done()) {
        const auto op = static_cast<Op>(commands.Byte() % OpCount);
        const std::size_t index = commands.Byte() % records.size();
        Bytes& plain = records[index].plain;
        std::size_t offset = commands.Byte();
        offset |= static_cast<std::size_t>(commands.Byte()) << 8;
        offset %= plain.size() + 1;
        const std::size_t length = commands.Byte();
        const auto payload = op == Overwrite || op == Insert ? commands.Take(length)
                                                             : std::span<const std::uint8_t>();
        switch (op) {
            case Overwrite:
                std::copy_n(payload.begin(), std::min(payload.size(), plain.size() - offset),
                            plain.begin() + static_cast<std::ptrdiff_t>(offset));
                break;
            case Insert:
                plain.insert(plain.begin() + static_cast<std::ptrdiff_t>(offset), payload.begin(),
                             payload.end());
                break;
            case Erase:
                plain.erase(plain.begin() + static_cast<std::ptrdiff_t>(offset),
                            plain.begin() + static_cast<std::ptrdiff_t>(
                                                offset + std::min(length, plain.size() - offset)));
                break;
            case Cut:
                cutRecord = index;
                cutOffset = offset;
                break;
            case OpCount:
                break;
        }
    }
    std::vector<std::size_t> starts;
    Bytes image = Encrypt(std::move(records), starts);
    if (cutRecord < starts.size()) {
        image.resize(std::min(image.size(), starts[cutRecord] + cutOffset));
    }
    return image;
}

Bytes SelfExtracting(const Bytes& image) {
    Bytes file(200, 0x90);  // any bytes do for the stub
    file.insert(file.end(), image.begin(), image.end());
    const SfxTrailerBytes trailer = BuildSfxTrailer(image.size());
    file.insert(file.end(), trailer.begin(), trailer.end());
    return file;
}

}  // namespace fuzz
