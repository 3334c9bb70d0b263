// Writes the seed corpus of every fuzz target: a few valid inputs each, made with the system's
// own writers, into <folder>/<target>/. Usage: fuzz_seed_corpus <folder>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "Common/DataCategory/CategoryContainer.h"
#include "crypto/SecurityKey.h"
#include "tests/TestFolder.h"
#include "tests/fuzz/HostileImage.h"

namespace {

namespace fs = std::filesystem;
using tests::Bytes;

void Write(const fs::path& path, std::span<const std::uint8_t> bytes) {
    tests::WriteBytes(path, bytes);
}

void Write(const fs::path& path, const std::string& text) {
    Write(path, Bytes(text.begin(), text.end()));
}

Bytes BlockOf(const Zelmarik::ISerializableEx& object) {
    const Zelmarik::Blob blob = Zelmarik::SerializeToBlob(object);
    return Bytes(blob.Data(), blob.Data() + blob.Size());
}

// A category with the optional parts present: extensions and a content tree.
Zelmarik::CDlpCategory RichCategory() {
    using Zelmarik::CContentResult;
    Zelmarik::CDlpCategory category;
    category.Id.Bytes = {9, 8, 7, 6, 5, 4, 3, 2, 1};
    category.Kind = 2;
    category.Priority = 5;
    category.Name = u"Payroll";
    category.SecondaryName = u"HR";
    category.Flags.HasPriority = true;
    category.Extensions.emplace();
    category.Extensions->Extensions = {u".doc", u".xls"};
    CContentResult& content = category.Content.GetOrCreate();
    content.Text = u"scan";
    CContentResult::FileResult file;
    file.RelativeName = u"a.txt";
    CContentResult::Definition definition;
    definition.Name = u"IBAN";
    definition.Elements.push_back({});
    definition.Elements.back().Matches.push_back({});
    definition.Categories.push_back(category.Id);
    file.Definitions.push_back(definition);
    file.FoundMetadata.push_back({});
    content.Files.push_back(file);
    content.ProcessingResult.GetOrCreate().Files.push_back(file);
    return category;
}

void CategorySeeds(const fs::path& folder) {
    Zelmarik::CCategoryContainer container;
    Write(folder / "empty", BlockOf(container));
    Zelmarik::CDlpCategory plain;
    plain.Id.Bytes = {1, 2, 3};
    container.Add(plain);
    Write(folder / "one", BlockOf(container));
    container.Add(RichCategory());
    Write(folder / "rich", BlockOf(container));
}

// 512 hexadecimal digits from a pattern.
std::string NumberLine(const std::string& pattern) {
    std::string line;
    while (line.size() < 512) {
        line += pattern;
    }
    return line.substr(0, 512);
}

std::string KeyFileHead(const std::string& eol) {
    std::string text = "Recipient \xC3\xA9" + eol;
    for (const char* pattern : {"f1e2d3c4b5a69788", "E9D8C7B6A5F4e3d1", "0123456789abcdef",
                                "fedcba9876543210", "13579bdf2468ace0"}) {
        text += NumberLine(pattern) + eol;
    }
    return text + "format 1" + eol;
}

void KeySeeds(const fs::path& folder) {
    Write(folder / "privkey", KeyFileHead("\n") + "23.11.2026, 15:30\n2\n");
    Write(folder / "privkey_crlf_undated", KeyFileHead("\r\n"));
    const std::string modulus =
        "c" + NumberLine("0f1e2d3c4b5a6978") + NumberLine("8796a5b4c3d2e1f") + "1";
    Write(folder / "public", modulus.substr(0, Zelmarik::DCCSecurityKey::kPublicKeyDigits));

    Zelmarik::DCCSecurityKey key;
    key.ParsePrivateKeyText((KeyFileHead("\n") + "1.2.2025, 8:05\n-1\n").c_str());
    key.SetPublicKeyText(modulus);
    key.Flags |= Zelmarik::KeyHasBitlocker;
    key.BitlockerKey = std::make_unique<Zelmarik::DCCBitlockerKey>();
    key.Text2 = u"second";
    Write(folder / "blob", BlockOf(key));
}

// The first byte tells the archive target what the rest is (see FuzzArchiveRead.cpp).
Bytes Tagged(std::uint8_t control, std::span<const std::uint8_t> rest) {
    Bytes input{control};
    input.insert(input.end(), rest.begin(), rest.end());
    return input;
}

void ArchiveSeeds(const fs::path& folder) {
    const fuzz::HostileImage image(u"secret");
    const Bytes valid = image.Valid();
    Write(folder / "image", Tagged(0x00, valid));
    Write(folder / "self_extracting", Tagged(0x01, fuzz::SelfExtracting(valid)));
    Write(folder / "edits_none", Bytes{0x02});
    Write(folder / "edits_none_wrapped_skip_existing", Bytes{0x2E});
    // Records: 0 preamble, 1 key block, 2 folder header, 3 end of header, 4 names, 5 header of
    // the first file, 6 its tag block, 7 to 12 its three chunks as length block and data, 13 the
    // empty file's header, 14 the last file's header, 15 its tag block, 16 and 17 its chunk.
    // Commands: op (0 overwrite, 2 erase, 3 cut), record, offset (2 bytes), length, payload.
    // Format version 1 with its layout: no end of header, legacy streams.
    Write(folder / "edits_legacy_version", Bytes{0x02, 0, 2, 0, 0, 1, 1, 2, 3, 0, 0, 16});
    // Format version 2: no tag blocks either.
    Write(folder / "edits_version_2",
          Bytes{0x02, 0, 2, 0, 0, 1, 2, 2, 3, 0, 0, 16, 2, 6, 0, 0, 255, 2, 15, 0, 0, 255});
    // A legacy stream far longer than the image.
    Write(folder / "edits_legacy_large_size",
          Bytes{0x02, 0, 2, 0, 0, 1, 1, 2, 3, 0, 0, 16, 0, 5, 0, 0, 8, 0, 0, 0, 0, 1, 0, 0, 0});
    // A size far beyond the stream.
    Write(folder / "edits_large_size", Bytes{0x02, 0, 5, 0, 0, 8, 0, 0, 0, 0, 1, 0, 0, 0});
    // A chunk length of 1280 blocks, the first that a reader refuses.
    Write(folder / "edits_chunk_length", Bytes{0x02, 0, 7, 0, 0, 4, 0, 0x50, 0, 0});
    // The image cut inside the first chunk's data.
    Write(folder / "edits_cut", Bytes{0x03, 3, 8, 40, 0, 0});
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <folder>\n", argv[0]);
        return 2;
    }
    const fs::path root = argv[1];
    CategorySeeds(root / "fuzz_category_block");
    KeySeeds(root / "fuzz_key_file");
    ArchiveSeeds(root / "fuzz_archive_read");
    return 0;
}
