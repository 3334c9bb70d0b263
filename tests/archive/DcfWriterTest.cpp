// Archives written by the format classes and read back by the reader; the sealed key block
// opened by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>

#include "archive/detail/DcfReader.h"
#include "archive/detail/FileFormatSFX.h"
#include "archive/detail/KeyBlockSealing.h"
#include "crypto/RandomPool.h"
#include "tests/RecipientKey.h"
#include "tests/archive/WriterFixture.h"

namespace tests {
namespace {

using Zelmarik::CCategoryContainer;
using Zelmarik::CDlpCategory;

// Text that compresses well, of any length.
Bytes Text(std::size_t size, char seed) {
    Bytes text(size);
    for (std::size_t i = 0; i < size; ++i) {
        text[i] = static_cast<std::uint8_t>("lorem ipsum dolor "[(i + seed) % 18]);
    }
    return text;
}

CDlpCategory Category(std::uint8_t id) {
    CDlpCategory category;
    category.Id = Zelmarik::CGuid(std::array<std::uint8_t, 16>{id, 0, 0, 0, 0, 0, 0, 0, 0, id});
    category.Name = u"category " + std::u16string(1, static_cast<char16_t>(u'A' + id));
    return category;
}

using DcfWriterTest = WriterFixture;

TEST_F(DcfWriterTest, TreeRoundTripsWithEveryPieceBorderAndName) {
    AddFolder("empty");
    AddFolder("deep/a/b/c/d/e/f/g");
    // Sizes around the piece of 2048 bytes, compressible and not.
    for (const std::size_t size : {0, 1, 15, 16, 2047, 2048, 2049, 4096, 3 * 2048 + 5}) {
        AddFile("sizes/text" + std::to_string(size), Text(size, 3));
        AddFile("sizes/noise" + std::to_string(size),
                Noise(size, static_cast<std::uint32_t>(size)));
    }
    AddFile("deep/a/b/c/d/e/f/g/leaf.txt", Text(100, 1));
    AddFile(fs::path(u8"\u00dcn\u00efc\u00f6d\u00e9 \u540d\u524d/\u0444\u0430\u0439\u043b.txt"),
            Text(3000, 7));
    for (int i = 0; i < 300; ++i) {
        AddFile("many/f" + std::to_string(i), Text(static_cast<std::size_t>(i % 37), 'a' + i % 5));
    }
    ASSERT_EQ(Write(), FORMAT_OK);
    EXPECT_EQ(LeftInFolder(), std::set<std::string>{"archive.dcf"});

    ASSERT_EQ(Extract(u"secret"), FORMAT_OK);
    ExpectExtractedTree();
    EXPECT_TRUE(fs::is_directory(Out() / "data" / "empty"));
    EXPECT_TRUE(fs::is_directory(Out() / "data" / "deep/a/b/c/d/e/f/g"));
    EXPECT_EQ(Extract(u"secre"), FORMAT_BAD_KEY);

    ASSERT_EQ(done.size(), contents_.size());  // in the order of the request
    EXPECT_EQ(done.back(), "f299");
}

TEST_F(DcfWriterTest, ProgressRisesToTheWholeAndStopsShortForAnUnopenedFile) {
    AddFile("one piece", Text(2048, 0));
    ASSERT_EQ(Write(), FORMAT_OK);
    // n = 1: the pass for the empty last piece reports once more before it ends.
    EXPECT_EQ(recorder_.percents, (std::vector<std::uint32_t>{100, 100}));

    recorder_.percents.clear();
    ClearItems();
    AddFile("big", Text(300 * 2048 + 7, 1));
    ArchiveWriteItem missing;
    missing.path = (SourceRoot() / "gone").u16string();
    missing.size = 300 * 2048 + 7;
    request_.items.push_back(missing);
    ASSERT_EQ(Write(), FORMAT_OK);
    // Every fourth piece of 301, none over 100, and half the total is never passed.
    EXPECT_EQ(recorder_.percents.size(), 76u);
    EXPECT_TRUE(std::is_sorted(recorder_.percents.begin(), recorder_.percents.end()));
    EXPECT_EQ(recorder_.percents.back(), 50u);

    ASSERT_EQ(Extract(u"secret"), FORMAT_OK);
    EXPECT_EQ(ReadBytes(Out() / "data" / "gone"), Bytes{});  // an entry without data
    ExpectExtractedTree();
}

TEST_F(DcfWriterTest, TheSourceIsThePathThatOnFileOpeningLeaves) {
    AddFile("shown.txt", Text(5000, 0));
    AddFile("kept.txt", Text(100, 4));
    // The replacement lies outside the tree; the entry keeps its name and measured size, so a
    // longer replacement is cut and a shorter one would read as zeros behind its end.
    const fs::path replacement = folder_.Native() / "replacement.bin";
    const Bytes other = Noise(6000, 11);
    WriteBytes(replacement, other);
    redirectOpening["shown.txt"] = replacement;
    ASSERT_EQ(Write(), FORMAT_OK);
    EXPECT_EQ(opened, (std::vector<fs::path>{"replacement.bin", "kept.txt"}));
    EXPECT_EQ(done, opened);  // onFileDone hears the path that was opened

    ASSERT_EQ(Extract(u"secret"), FORMAT_OK);
    EXPECT_EQ(ReadBytes(Out() / "data" / "shown.txt"), Bytes(other.begin(), other.begin() + 5000));
    EXPECT_EQ(ReadBytes(Out() / "data" / "kept.txt"), Text(100, 4));
}

TEST_F(DcfWriterTest, CategoriesGoToTheirEntriesAndMergedIntoThePreamble) {
    ArchiveWriteItem& first = AddFile("a.doc", Text(10, 0));
    first.hasCategories = true;
    first.categories.Add(Category(1));
    first.categories.Add(Category(2));
    ArchiveWriteItem& second = AddFile("b.doc", Text(10, 1));
    second.hasCategories = true;
    second.categories.Add(Category(2));
    second.categories.Add(Category(3));
    AddFile("c.doc", Text(10, 2));
    ArchiveWriteItem& empty = AddFile("d.doc", {});
    empty.hasCategories = true;  // a tag block with no category in it
    ASSERT_EQ(Write(), FORMAT_OK);

    platform::File stream;
    ASSERT_EQ(stream.Open(ArchivePath().u16string(), platform::OpenMode::Read), 0u);
    CCategoryContainer merged;
    bool parsed = false;
    ASSERT_EQ(ReadArchivePreamble(stream, merged, parsed), FORMAT_OK);
    ASSERT_TRUE(parsed);
    ASSERT_EQ(merged.Categories.size(), 3u);
    EXPECT_EQ(merged.Categories.back().Name, u"category D");

    ASSERT_EQ(stream.Seek(0), 0u);
    ArchiveExtractRequest extract;
    extract.password = u"secret";
    ArchiveReport report;
    DCCArchiveUserSettings settings;
    ASSERT_EQ(InspectArchiveBody(stream, extract, settings, report), FORMAT_OK);
    ASSERT_EQ(report.entries.size(), 4u);
    EXPECT_EQ(report.entries[0].categories.Categories.size(), 2u);
    EXPECT_EQ(report.entries[1].categories.Categories.front().Name, u"category C");
    EXPECT_FALSE(report.entries[2].tagged);
    EXPECT_TRUE(report.entries[3].tagged);
    EXPECT_TRUE(report.entries[3].categories.Categories.empty());
}

TEST_F(DcfWriterTest, ArchiveWithoutFilesKeepsItsFolders) {
    AddFolder("only");
    ASSERT_EQ(Write(), FORMAT_OK);
    ASSERT_EQ(Extract(u"secret"), FORMAT_OK);
    EXPECT_TRUE(fs::is_directory(Out() / "data" / "only"));
}

// The stub is copied whole, larger than any buffer, and the image opens behind it.
TEST_F(DcfWriterTest, SelfExtractingFileCarriesTheStubAndOpensThroughItsTrailer) {
    AddFile("inside.txt", Text(5000, 2));
    const Bytes stub = Noise(100000, 9);
    const fs::path stubPath = folder_.Native() / "stub.bin";
    WriteBytes(stubPath, stub);
    DCCFileFormatSFX sfx(stubPath.u16string());
    ASSERT_EQ(Write(sfx), FORMAT_OK);
    const Bytes file = *ReadBytes(ArchivePath("archive.exe"));
    EXPECT_TRUE(std::equal(stub.begin(), stub.end(), file.begin()));
    ASSERT_EQ(Extract(sfx, ArchivePath("archive.exe"), u"secret"), FORMAT_OK);
    ExpectExtractedTree();
    fs::remove(stubPath);
    EXPECT_EQ(LeftInFolder(), std::set<std::string>{"archive.exe"});
}

// Archives sealed for the test program's recipient.
using DcfWriterKeyTest = WriterFixture;

Zelmarik::DCCSecurityKey PublicKey() {
    Zelmarik::DCCSecurityKey key;
    key.SetPublicKeyText(Recipient().pair.publicKeyText);
    return key;
}

TEST_F(DcfWriterKeyTest, EachWayOfSealingOpensWithWhatItWasSealedFor) {
    AddFile("k.bin", Noise(5000, 4));
    struct Case {
        const char* name;
        bool passwordGiven;
        std::u16string password;
        bool forKey;
        bool opensBySecret, opensByEmpty, opensByKey;
    };
    for (const Case& c : {Case{"password", true, u"secret", false, true, false, false},
                          Case{"recipient only", false, u"", true, false, false, true},
                          Case{"both", true, u"secret", true, true, false, true},
                          Case{"empty password given", true, u"", false, false, true, false},
                          Case{"nothing", false, u"", false, false, false, false}}) {
        SCOPED_TRACE(c.name);
        request_.passwordGiven = c.passwordGiven;
        request_.password = c.password;
        request_.sealForKey = c.forKey;
        request_.securityKey = c.forKey ? PublicKey() : Zelmarik::DCCSecurityKey{};
        ASSERT_EQ(Write(), FORMAT_OK);
        EXPECT_EQ(Extract(u"secret") == FORMAT_OK, c.opensBySecret);
        EXPECT_EQ(Extract(u"") == FORMAT_OK, c.opensByEmpty);
        EXPECT_EQ(Extract(u"", &Recipient().privateKey) == FORMAT_OK, c.opensByKey);
        if (c.opensByKey) {
            ExpectExtractedTree();
        }
    }
}

TEST_F(DcfWriterKeyTest, SealedKeyBlocksAreNewEachTimeAndCarryTheLocalTime) {
    const auto& modulus = Recipient().modulus;
    const Bytes password = {'p', 'w'};
    crypto::RandomStart();
    dcf::KeyBlock first{}, second{};
    KeyContextPtr firstKeys, secondKeys;
    ASSERT_EQ(SealKeyBlock(first, password, modulus.data(), firstKeys), kKeyBlockOpened);
    ASSERT_EQ(SealKeyBlock(second, password, nullptr, secondKeys), kKeyBlockOpened);
    crypto::RandomStop();

    // Salt, both slots and the keys differ: a fixed random source would show here.
    std::size_t same = 0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        same += first[i] == second[i] ? 1 : 0;
    }
    EXPECT_LT(same, 20u);
    EXPECT_NE(firstKeys->MasterKeyArea, secondKeys->MasterKeyArea);
    // The creation time is the local wall clock in FILETIME ticks.
    const std::time_t now = std::time(nullptr);
    const std::tm local = *std::localtime(&now);
    using namespace std::chrono;
    const sys_days date = year{local.tm_year + 1900} / (local.tm_mon + 1) / local.tm_mday;
    const auto sinceEpoch = date - sys_days{year{1601} / 1 / 1} + hours{local.tm_hour} +
                            minutes{local.tm_min} + seconds{local.tm_sec};
    const auto expected = static_cast<std::int64_t>(duration_cast<seconds>(sinceEpoch).count());
    EXPECT_NEAR(static_cast<double>(firstKeys->Created / 10'000'000), static_cast<double>(expected),
                5.0);
}

}  // namespace
}  // namespace tests
