// Whole archives fixed in bytes: the reader must extract each to exactly its tree, and the writer,
// under this program's fixed random pool and clock, must make exactly its bytes. A change of the
// key derivation, the chunk chain, a CRC or the rounding of the name block shows here.
//
// The codec is pinned by the data: every file is noise in whole pieces, which each engine stores
// as it is, so that one image holds for libdeflate and zlib alike.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "KnownAnswerData.inc"
#include "archive/Archive.h"
#include "archive/detail/ChunkCodecStored.h"
#include "platform/Text.h"
#include "tests/TestFolder.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kPieceSize = 2048;
constexpr char16_t kPassword[] = u"known answer";

// A relative path with '/' for each folder (no content) and file of a tree.
using Tree = std::map<std::string, std::optional<Bytes>>;

Bytes Noise(std::size_t size, std::uint32_t seed) {
    std::mt19937 generator(seed);  // the same numbers on every platform
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(generator() >> 24);
    }
    return bytes;
}

// The names with their terminators fill 96 code units, a multiple of 16: there the name block's
// rounding adds a whole 16 units more.
const Tree& ArchivedTree() {
    static const Tree tree = {
        {"kat", std::nullopt},
        {"kat/docs", std::nullopt},
        {"kat/docs/empty", std::nullopt},
        {"kat/docs/report-2021.bin", Noise(2 * kPieceSize, 1)},
        {"kat/docs/zero.bin", Bytes()},
        {"kat/notes-2021.bin", Noise(kPieceSize, 2)},
    };
    return tree;
}

// The category of the report, which the preamble carries too.
Zelmarik::CDlpCategory ReportCategory() {
    Zelmarik::CDlpCategory category;
    EXPECT_TRUE(Zelmarik::CGuid::FromString("6f1c2a4e-0b7d-4c3e-9a51-2f8e3d7c1b90", category.Id));
    category.Name = u"Confidential";
    return category;
}

struct KnownImage {
    const char* name;
    const Bytes& bytes;
    bool sealedForKey;  // besides the password
};
const KnownImage kImages[] = {{"password.dcf", kPasswordImage, false},
                              {"recipient.dcf", kRecipientImage, true}};

Tree TreeUnder(const fs::path& root) {
    Tree tree;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string path = entry.path().lexically_relative(root).generic_string();
        if (path.find(':') != std::string::npos) {
            continue;  // a tag stream, which Wine keeps as a file of its own
        }
        tree[path] = entry.is_directory() ? std::nullopt : tests::ReadBytes(entry.path());
    }
    return tree;
}

Zelmarik::DCCSecurityKey PrivateKey() {
    const std::string text(kPrivateKeyText.begin(), kPrivateKeyText.end());
    Zelmarik::DCCSecurityKey key;
    EXPECT_TRUE(key.ParsePrivateKeyText(text.c_str()));
    key.Flags |= Zelmarik::KeyHasPrivate;
    return key;
}

// The request that makes `image` from the tree laid out under `folder`, in a fixed order.
ArchiveWriteRequest RequestFor(const KnownImage& image, const fs::path& folder) {
    ArchiveWriteRequest request;
    request.rootPath = (folder / "kat").u16string();
    request.archiveFolder = folder.u16string();
    request.archiveName = u"image.dcf";
    request.password = kPassword;
    request.passwordGiven = true;
    if (image.sealedForKey) {
        request.sealForKey = true;
        request.securityKey.SetPublicKeyText(
            std::string(kPublicKeyText.begin(), kPublicKeyText.end()));
    }
    for (const auto& [path, content] : ArchivedTree()) {
        ArchiveWriteItem item;
        item.path = (folder / path).u16string();
        item.isFolder = !content.has_value();
        if (content) {
            tests::WriteBytes(folder / path, *content);
            item.size = content->size();
        } else {
            fs::create_directories(folder / path);
        }
        if (path == "kat/docs/report-2021.bin") {
            item.hasCategories = true;
            item.categories.Categories.push_back(ReportCategory());
        }
        request.items.push_back(std::move(item));
    }
    return request;
}

TEST(KnownAnswerTest, EveryPieceIsStoredWhateverTheEngine) {
    for (const auto& [path, content] : ArchivedTree()) {
        for (std::size_t at = 0; content && at < content->size(); at += kPieceSize) {
            SCOPED_TRACE(path + " at " + std::to_string(at));
            EXPECT_TRUE(LooksIncompressible(std::span(*content).subspan(at, kPieceSize)));
        }
    }
}

TEST(KnownAnswerTest, WriterMakesEachImageByteForByte) {
    for (const KnownImage& image : kImages) {
        SCOPED_TRACE(image.name);
        tests::TestFolder folder;
        ArchiveWriteRequest request = RequestFor(image, folder.Native());
        DCCArchiveUserSettings settings;
        DCCFileFormatDCF format;
        ASSERT_EQ(format.WriteArchive(&request, &settings), FORMAT_OK);
        const Bytes written = tests::ReadBytes(folder.Native() / "image.dcf").value_or(Bytes{});
        if (written != image.bytes) {
            // Kept for a look, or to take the place of the known image after a deliberate change.
            const fs::path kept = fs::current_path() / image.name;
            tests::WriteBytes(kept, written);
            ADD_FAILURE() << "the writer's image differs from tests/archive/data/" << image.name
                          << " (" << written.size() << " bytes against " << image.bytes.size()
                          << "); it is kept in " << kept.string();
        }
    }
}

TEST(KnownAnswerTest, ReaderExtractsEachImageToItsTree) {
    const Zelmarik::DCCSecurityKey privateKey = PrivateKey();
    for (const KnownImage& image : kImages) {
        for (const bool byKey : {false, true}) {
            if (byKey && !image.sealedForKey) {
                continue;
            }
            SCOPED_TRACE(std::string(image.name) + (byKey ? " by key" : " by password"));
            tests::TestFolder folder;
            tests::WriteBytes(folder.Native() / image.name, image.bytes);
            ArchiveImage archive;
            platform::ErrorCode error = platform::kErrorSuccess;
            ASSERT_EQ(archive.Open(folder.Path(platform::Utf8ToUtf16(image.name)), error),
                      FORMAT_OK);

            Zelmarik::CCategoryContainer preamble;
            bool parsed = false;
            ASSERT_EQ(archive.ReadPreamble(preamble, parsed), FORMAT_OK);
            ASSERT_TRUE(parsed);
            ASSERT_EQ(preamble.Categories.size(), 1u);
            EXPECT_EQ(preamble.Categories.front().Id, ReportCategory().Id);

            ArchiveExtractRequest request;
            request.targetPath = folder.Path(u"out");
            fs::create_directory(folder.Native() / "out");
            if (byKey) {
                request.securityKey = privateKey;
                request.keyGiven = true;
            } else {
                request.password = kPassword;
                request.passwordGiven = true;
            }
            DCCArchiveUserSettings settings;
            std::vector<std::u16string> extracted;
            ArchiveReport report;
            ASSERT_EQ(archive.Extract(request, settings, extracted, report), FORMAT_OK);
            EXPECT_EQ(TreeUnder(folder.Native() / "out"), ArchivedTree());
            ASSERT_EQ(report.entries.size(), 3u);
            for (const ArchiveEntryInfo& entry : report.entries) {
                EXPECT_EQ(entry.categories.Categories.size(),
                          entry.name == u"\\kat\\docs\\report-2021.bin" ? 1u : 0u);
            }
        }
    }
}

}  // namespace
