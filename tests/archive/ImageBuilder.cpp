#include "tests/archive/ImageBuilder.h"

#include <zlib.h>

#include <algorithm>
#include <random>
#include <stdexcept>

#include "Common/Common/Endian.h"
#include "Common/DataCategory/CategoryContainer.h"
#include "crypto/Hashes.h"
#include "crypto/Rsa.h"

namespace tests {

namespace {

crypto::ChunkChain MakeChain(const KeyContext& keys) {
    auto chain = crypto::ChunkChain::Create(keys.SuiteId, keys.KeySchedule, keys.IvArea);
    if (!chain) {
        throw std::runtime_error("suite without a chunk chain");
    }
    return *chain;
}

KeyContextPtr MasterKeys(const ImageSettings& settings, dcf::KeyBlock& block) {
    std::mt19937 random(settings.seed);
    for (auto& byte : block) {
        byte = static_cast<std::uint8_t>(random());
    }
    if (settings.keyBlockVersion <= 1) {
        // The area ends the RSA message unmoved: its top word must keep m below n.
        std::fill_n(block.begin() + dcf::kMasterKeyOffset + dcf::kMasterKeySize - 4, 4, 0);
    }
    KeyContextPtr keys = AllocateKeyContext();
    const auto area =
        std::span<const std::uint8_t>(block).subspan(dcf::kMasterKeyOffset, dcf::kMasterKeySize);
    if (!keys || !LoadKeys(*keys, settings.suite, area)) {
        throw std::runtime_error("suite cannot be initialised");
    }
    return keys;
}

}  // namespace

Bytes Compress(std::span<const std::uint8_t> data) {
    uLongf size = compressBound(data.size());
    Bytes out(size);
    if (compress2(out.data(), &size, data.data(), data.size(), 6) != Z_OK) {
        throw std::runtime_error("compress failed");
    }
    out.resize(size);
    return out;
}

Bytes Noise(std::size_t size, std::uint32_t seed) {
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (auto& byte : bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    return bytes;
}

Bytes OneCategoryBlock() {
    Zelmarik::CCategoryContainer container;
    Zelmarik::CDlpCategory category;
    category.Id = Zelmarik::CGuid(std::array<std::uint8_t, 16>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    container.Add(category);
    const Zelmarik::Blob blob = Zelmarik::WriteCategoryBlock(container);
    return Bytes(blob.Data(), blob.Data() + blob.Size());
}

ImageBuilder::ImageBuilder(const ImageSettings& settings)
    : settings_(settings), chain_([&] {
          dcf::KeyBlock block{};
          keys_ = MasterKeys(settings, block);
          return MakeChain(*keys_);
      }()) {}

void ImageBuilder::Append(const Bytes& record) {
    borders_.push_back(image_.size());
    image_.insert(image_.end(), record.begin(), record.end());
}

void ImageBuilder::AppendRegion(Bytes record) {
    if (!EncryptRegion(*keys_, record)) {
        throw std::runtime_error("region encryption failed");
    }
    Append(record);
}

void ImageBuilder::Preamble(std::span<const std::uint8_t> categoryBlock) {
    Append(dcf::EncodePreamble(categoryBlock));
}

void ImageBuilder::KeyBlock() {
    dcf::KeyBlock block{};
    MasterKeys(settings_, block);  // the same bytes as the keys in force
    const auto area =
        std::span<const std::uint8_t>(block).subspan(dcf::kMasterKeyOffset, dcf::kMasterKeySize);
    dcf::KeyBlockFields fields;
    fields.version = settings_.keyBlockVersion;
    fields.crc = crypto::Crc32(area);
    fields.created = 0x01D9000011112222;
    fields.suiteId = settings_.declaredSuite != 0 ? settings_.declaredSuite : settings_.suite;
    dcf::StoreKeyBlockFields(block, fields);

    if (settings_.modulus != nullptr) {
        dcf::RsaMessage message{};
        if (settings_.keyBlockVersion > 1) {
            dcf::BuildRsaMessage(block, message);
        } else {
            std::copy_n(block.begin(), dcf::kRsaSlotSize, message.begin());
        }
        std::vector<std::uint32_t> m(Zelmarik::kRsaNumberWords);
        std::vector<std::uint32_t> e(Zelmarik::kRsaNumberWords);
        e[0] = Zelmarik::kRsaPublicExponent;
        for (std::size_t i = 0; i < m.size(); ++i) {
            m[i] = Zelmarik::LoadLittle<std::uint32_t>(message.data() + 4 * i);
        }
        if (Zelmarik::NumberModExp(m.data(), m.data(), e.data(), settings_.modulus) != 0) {
            throw std::runtime_error("RSA failed");
        }
        for (std::size_t i = 0; i < m.size(); ++i) {
            Zelmarik::StoreLittle<std::uint32_t>(block.data() + dcf::kRsaSlotOffset + 4 * i, m[i]);
        }
    }

    const auto password = dcf::PasswordBytes(settings_.password);
    Bytes derived(dcf::kDerivedKeySize);
    KeyContextPtr passwordKeys = AllocateKeyContext();
    // A suite whose keys outgrow the derived bytes can't seal the password slot; such archives
    // open by the RSA slot alone, and suite 1 fills the slot.
    const std::uint32_t passwordSuite =
        crypto::SuiteKeySize(settings_.suite) + dcf::kIvAreaSize <= dcf::kDerivedKeySize
            ? settings_.suite
            : crypto::kSuiteAes;
    if (!password ||
        crypto::DeriveKey(crypto::HmacSha256, crypto::kSha256DigestSize, *password,
                          std::span<const std::uint8_t>(block).first(dcf::kSaltSize),
                          dcf::kIterations, derived) != 0 ||
        !LoadKeys(*passwordKeys, passwordSuite, derived) ||
        !EncryptRegion(*passwordKeys, std::span<std::uint8_t>(block).subspan(
                                          dcf::kPasswordSlotOffset, dcf::kPasswordSlotSize))) {
        throw std::runtime_error("password slot failed");
    }
    Append(Bytes(block.begin(), block.end()));
}

void ImageBuilder::FolderHeader(const dcf::FolderHeader& header) {
    Bytes record(dcf::kFolderHeaderSize);
    dcf::EncodeFolderHeader(header, std::span<std::uint8_t, dcf::kFolderHeaderSize>(record));
    AppendRegion(std::move(record));
}

void ImageBuilder::EndOfHeader() {
    Bytes record(dcf::kEndOfHeaderSize);
    dcf::EncodeEndOfHeader(std::span<std::uint8_t, dcf::kEndOfHeaderSize>(record));
    AppendRegion(std::move(record));
}

void ImageBuilder::NameBlock(const std::vector<std::u16string>& folders,
                             const std::vector<std::u16string>& files) {
    AppendRegion(dcf::EncodeNameBlock(folders, files));
}

void ImageBuilder::FileHeader(const dcf::FileHeader& header) {
    Bytes record(dcf::kFileHeaderSize);
    dcf::EncodeFileHeader(header, std::span<std::uint8_t, dcf::kFileHeaderSize>(record));
    AppendRegion(std::move(record));
}

void ImageBuilder::TagBlock(std::span<const std::uint8_t> categoryBlock) {
    AppendRegion(dcf::EncodeTagBlock(categoryBlock));
}

void ImageBuilder::StartStream() {
    chain_.Restart();
}

void ImageBuilder::Chunk(std::uint32_t lengthField, std::span<const std::uint8_t> compressed) {
    const std::size_t blockSize = BlockSize();
    Bytes chunk(blockSize);
    dcf::EncodeChunkLength(lengthField, chunk);
    chunk.insert(chunk.end(), compressed.begin(), compressed.end());
    chunk.resize(blockSize + dcf::ChunkDataBlocks(compressed.size(), blockSize) * blockSize, 0);
    chain_.EncryptBlocks(chunk);
    Append(chunk);
}

std::vector<std::uint32_t> ImageBuilder::DataStream(std::span<const std::uint8_t> content) {
    StartStream();
    const std::size_t blockSize = BlockSize();
    std::vector<std::uint32_t> lengths;
    if (!dcf::UsesChunks(settings_.formatVersion)) {
        Bytes blocks(content.begin(), content.end());
        blocks.resize(dcf::LegacyBlockCount(content.size(), blockSize) * blockSize, 0);
        chain_.EncryptBlocks(blocks);
        Append(blocks);
        return lengths;
    }
    const std::size_t piece = dcf::PieceSize(blockSize);
    for (std::size_t offset = 0; offset < content.size(); offset += piece) {
        const Bytes compressed =
            Compress(content.subspan(offset, std::min(piece, content.size() - offset)));
        Chunk(static_cast<std::uint32_t>(compressed.size()), compressed);
        lengths.push_back(static_cast<std::uint32_t>(compressed.size()));
    }
    return lengths;
}

Bytes BuildImage(const ImageSettings& settings, const std::vector<std::u16string>& folders,
                 const std::vector<EntrySpec>& entries, const Bytes& archiveCategories,
                 std::vector<std::size_t>* borders) {
    ImageBuilder builder(settings);
    builder.Preamble(archiveCategories);
    builder.KeyBlock();
    std::vector<std::u16string> files;
    std::uint64_t total = 0;
    for (const auto& entry : entries) {
        files.push_back(entry.name);
        total += entry.content.size();
    }
    const Bytes names = dcf::EncodeNameBlock(folders, files);
    builder.FolderHeader({settings.formatVersion, static_cast<std::uint32_t>(files.size()),
                          static_cast<std::uint32_t>(folders.size()), total, names.size()});
    if (dcf::HasEndOfHeaderBlock(settings.formatVersion)) {
        builder.EndOfHeader();
    }
    builder.NameBlock(folders, files);
    for (const auto& entry : entries) {
        const bool tagged = !entry.categoryBlock.empty();
        builder.FileHeader({entry.content.size(), static_cast<std::uint8_t>(tagged ? 1 : 0),
                            dcf::RaisedTagBlockLength(entry.categoryBlock.size())});
        if (tagged && dcf::ReadsTagBlock(settings.formatVersion)) {
            builder.TagBlock(entry.categoryBlock);
        }
        builder.DataStream(entry.content);
    }
    if (borders != nullptr) {
        *borders = builder.Borders();
    }
    return builder.Image();
}

}  // namespace tests
