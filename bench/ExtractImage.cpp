// Inputs of the extraction benchmark, made without the archive writer:
//   extract_image data MIB OUT        compressible text of MIB mebibytes
//   extract_image image RAW OUT PASS  a DCF image holding RAW as the one file "\data.bin",
//                                     sealed with PASS, suite 1, written record by record
// The image is streamed, so memory stays small whatever the size of RAW.
#include <zlib.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "Common/DataCategory/CategoryContainer.h"
#include "archive/detail/DcfRecords.h"
#include "archive/detail/KeyContext.h"
#include "crypto/ChunkChain.h"
#include "crypto/Hashes.h"
#include "platform/Text.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

[[noreturn]] void Die(const std::string& message) {
    std::cerr << "extract_image: " << message << '\n';
    std::exit(1);
}

// Log-like lines of words and numbers: gzip -6 shrinks them to about a third.
void MakeData(std::uint64_t mebibytes, const char* path) {
    static const char* const kWords[] = {
        "alpha", "bravo",  "charlie", "delta", "echo", "foxtrot",  "golf",  "hotel",
        "india", "juliet", "kilo",    "lima",  "mike", "november", "oscar", "papa"};
    std::ofstream out(path, std::ios::binary);
    std::mt19937 random(42);
    const std::uint64_t size = mebibytes << 20;
    std::string buffer;
    std::uint64_t written = 0;
    std::uint64_t line = 0;
    while (written < size) {
        buffer.clear();
        while (buffer.size() < (1u << 20)) {
            char head[64];
            std::snprintf(head, sizeof head, "%012llu %08x ",
                          static_cast<unsigned long long>(line++), static_cast<unsigned>(random()));
            buffer += head;
            for (int word = 0; word < 6; ++word) {
                buffer += kWords[random() % 16];
                buffer += ' ';
            }
            buffer += '\n';
        }
        const auto take =
            static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), size - written));
        out.write(buffer.data(), static_cast<std::streamsize>(take));
        written += take;
    }
    if (!out) {
        Die(std::string("cannot write ") + path);
    }
}

class ImageWriter {
public:
    ImageWriter(const char* path, std::size_t capacity) : out_(path, std::ios::binary) {
        buffer_.reserve(capacity);
    }
    ~ImageWriter() { Flush(); }
    void Put(const std::uint8_t* data, std::size_t size) {
        if (buffer_.size() + size > buffer_.capacity()) {
            Flush();
        }
        buffer_.insert(buffer_.end(), data, data + size);
    }
    void Put(const Bytes& bytes) { Put(bytes.data(), bytes.size()); }
    void Flush() {
        out_.write(reinterpret_cast<const char*>(buffer_.data()),
                   static_cast<std::streamsize>(buffer_.size()));
        buffer_.clear();
        if (!out_) {
            Die("cannot write the image");
        }
    }

private:
    std::ofstream out_;
    Bytes buffer_;
};

// The key block for `password`; `keys` receives the keys of its master key area.
dcf::KeyBlock SealKeyBlock(const std::u16string& password, KeyContext& keys) {
    dcf::KeyBlock block{};
    std::mt19937 random(7);
    for (auto& byte : block) {
        byte = static_cast<std::uint8_t>(random());
    }
    const auto area =
        std::span<const std::uint8_t>(block).subspan(dcf::kMasterKeyOffset, dcf::kMasterKeySize);
    if (!LoadKeys(keys, crypto::kSuiteAes, area)) {
        Die("suite 1 cannot be initialised");
    }
    dcf::KeyBlockFields fields;
    fields.crc = crypto::Crc32(area);
    dcf::StoreKeyBlockFields(block, fields);

    const auto passwordBytes = dcf::PasswordBytes(password);
    Bytes derived(dcf::kDerivedKeySize);
    KeyContextPtr passwordKeys = AllocateKeyContext();
    if (!passwordBytes || !passwordKeys ||
        crypto::DeriveKey(crypto::HmacSha256, crypto::kSha256DigestSize, *passwordBytes,
                          std::span<const std::uint8_t>(block).first(dcf::kSaltSize),
                          dcf::kIterations, derived) != 0 ||
        !LoadKeys(*passwordKeys, crypto::kSuiteAes, derived) ||
        !EncryptRegion(*passwordKeys, std::span<std::uint8_t>(block).subspan(
                                          dcf::kPasswordSlotOffset, dcf::kPasswordSlotSize))) {
        Die("cannot seal the password slot");
    }
    return block;
}

Bytes Region(const KeyContext& keys, Bytes record) {
    if (!EncryptRegion(keys, record)) {
        Die("region encryption failed");
    }
    return record;
}

void MakeImage(const char* rawPath, const char* imagePath, const char* password) {
    std::ifstream raw(rawPath, std::ios::binary | std::ios::ate);
    if (!raw) {
        Die(std::string("cannot read ") + rawPath);
    }
    const auto size = static_cast<std::uint64_t>(raw.tellg());
    raw.seekg(0);

    ImageWriter out(imagePath, 1 << 20);
    const Zelmarik::Blob categories = Zelmarik::WriteCategoryBlock({});
    out.Put(dcf::EncodePreamble({categories.Data(), categories.Size()}));
    KeyContextPtr keys = AllocateKeyContext();
    const dcf::KeyBlock keyBlock = SealKeyBlock(platform::Utf8ToUtf16(password), *keys);
    out.Put(keyBlock.data(), keyBlock.size());

    const std::vector<std::u16string> files = {u"\\data.bin"};
    const Bytes names = dcf::EncodeNameBlock({}, files);
    Bytes record(dcf::kFolderHeaderSize);
    dcf::EncodeFolderHeader({dcf::kFormatVersion, 1, 0, size, names.size()},
                            std::span<std::uint8_t, dcf::kFolderHeaderSize>(record));
    out.Put(Region(*keys, record));
    Bytes end(dcf::kEndOfHeaderSize);
    dcf::EncodeEndOfHeader(std::span<std::uint8_t, dcf::kEndOfHeaderSize>(end));
    out.Put(Region(*keys, end));
    out.Put(Region(*keys, names));
    Bytes header(dcf::kFileHeaderSize);
    dcf::EncodeFileHeader({size, 0, 0}, std::span<std::uint8_t, dcf::kFileHeaderSize>(header));
    out.Put(Region(*keys, header));

    auto chain = crypto::ChunkChain::Create(keys->SuiteId, keys->KeySchedule, keys->IvArea);
    z_stream z{};
    if (!chain || deflateInit(&z, 6) != Z_OK) {
        Die("cannot set up the stream");
    }
    const std::size_t blockSize = chain->BlockSize();
    Bytes piece(dcf::PieceSize(blockSize));
    Bytes chunk(blockSize + 2 * piece.size());
    for (std::uint64_t left = size; left > 0;) {
        const auto take = static_cast<std::size_t>(std::min<std::uint64_t>(piece.size(), left));
        raw.read(reinterpret_cast<char*>(piece.data()), static_cast<std::streamsize>(take));
        left -= take;
        deflateReset(&z);
        z.next_in = piece.data();
        z.avail_in = static_cast<uInt>(take);
        z.next_out = chunk.data() + blockSize;
        z.avail_out = static_cast<uInt>(chunk.size() - blockSize);
        if (!raw || deflate(&z, Z_FINISH) != Z_STREAM_END) {
            Die("cannot compress a piece");
        }
        const auto compressed = static_cast<std::uint32_t>(z.total_out);
        const auto stored = static_cast<std::size_t>(dcf::ChunkStoredSize(compressed, blockSize));
        std::fill(chunk.begin(), chunk.begin() + blockSize, 0);
        dcf::EncodeChunkLength(compressed, {chunk.data(), blockSize});
        std::fill(chunk.begin() + blockSize + compressed, chunk.begin() + stored, 0);
        chain->EncryptBlocks({chunk.data(), stored});
        out.Put(chunk.data(), stored);
    }
    deflateEnd(&z);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 4 && std::strcmp(argv[1], "data") == 0) {
        MakeData(std::stoull(argv[2]), argv[3]);
        return 0;
    }
    if (argc == 5 && std::strcmp(argv[1], "image") == 0) {
        MakeImage(argv[2], argv[3], argv[4]);
        return 0;
    }
    std::cerr << "usage: extract_image data MIB OUT | extract_image image RAW OUT PASSWORD\n";
    return 2;
}
