#pragma once
// Builds DCF images record by record for the reader's tests, encrypted with the crypto
// component, so that each record can be left out, damaged or cut short on its own.

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "archive/detail/DcfRecords.h"
#include "archive/detail/KeyContext.h"
#include "crypto/ChunkChain.h"

namespace tests {

using Bytes = std::vector<std::uint8_t>;

struct ImageSettings {
    std::uint32_t suite = 1;
    std::uint8_t formatVersion = 3;
    std::uint16_t keyBlockVersion = 3;
    std::u16string password = u"secret";
    // The suite id that the key block names, when it differs from the suite in force.
    std::uint32_t declaredSuite = 0;
    // 128 words: the recipient's modulus that seals the RSA slot; null leaves it random.
    const std::uint32_t* modulus = nullptr;
    std::uint32_t seed = 1;
};

class ImageBuilder {
public:
    explicit ImageBuilder(const ImageSettings& settings);

    void Preamble(std::span<const std::uint8_t> categoryBlock);
    void KeyBlock();
    void FolderHeader(const dcf::FolderHeader& header);
    void EndOfHeader();
    void NameBlock(const std::vector<std::u16string>& folders,
                   const std::vector<std::u16string>& files);
    void FileHeader(const dcf::FileHeader& header);
    void TagBlock(std::span<const std::uint8_t> categoryBlock);
    // The whole data stream of `content`: chunks of 128·B or a legacy stream, by the format
    // version. Gives the compressed length of each chunk.
    std::vector<std::uint32_t> DataStream(std::span<const std::uint8_t> content);
    // Starts the chain of a new entry's stream.
    void StartStream();
    // One chunk with the given length field and compressed bytes (which may lie).
    void Chunk(std::uint32_t lengthField, std::span<const std::uint8_t> compressed);

    // Stream blocks of the suite.
    std::size_t BlockSize() const { return chain_.BlockSize(); }
    const Bytes& Image() const { return image_; }
    std::size_t Size() const { return image_.size(); }
    // Where each record begins, and the end.
    const std::vector<std::size_t>& Borders() const { return borders_; }
    const KeyContext& Keys() const { return *keys_; }

private:
    void Append(const Bytes& record);
    void AppendRegion(Bytes record);

    ImageSettings settings_;
    KeyContextPtr keys_;
    crypto::ChunkChain chain_;
    Bytes image_;
    std::vector<std::size_t> borders_;
};

// A zlib stream of `data` at level 6.
Bytes Compress(std::span<const std::uint8_t> data);
// Bytes that compress poorly, from a seed.
Bytes Noise(std::size_t size, std::uint32_t seed);
// The block form of a container with one category, whose identifier is the bytes 1 to 10 and
// six zeros.
Bytes OneCategoryBlock();

struct EntrySpec {
    std::u16string name;
    Bytes content;
    Bytes categoryBlock;  // empty: no tag block
};

// A complete image: preamble with `archiveCategories`, key block, headers, names, entries.
// `borders` receives where each record begins: preamble, key block, folder header, end of
// header (versions 3 and above), name block, then per entry its header, tag block and stream.
Bytes BuildImage(const ImageSettings& settings, const std::vector<std::u16string>& folders,
                 const std::vector<EntrySpec>& entries, const Bytes& archiveCategories = {},
                 std::vector<std::size_t>* borders = nullptr);

}  // namespace tests
