// What WriteArchive does with an existing archive, with the caller's answers and checks, and
// what each failure leaves behind.
#include <gtest/gtest.h>

#include "archive/detail/ArchivePathSettling.h"
#include "archive/detail/DcfWriter.h"
#include "archive/detail/FileFormatSFX.h"
#include "crypto/random/ProcessPool.h"
#include "tests/archive/WriterFixture.h"

namespace tests {
namespace {

class WriteArchiveOutcomesTest : public WriterFixture {
protected:
    void SetUp() override {
        WriterFixture::SetUp();
        AddFile("a.txt", Noise(3000, 1));
        AddFile("b.txt", Noise(5000, 2));
        AddFile("c.txt", Noise(100, 3));
    }
    // Writes the archive that later writes find in place; gives its bytes.
    Bytes OldArchive() {
        EXPECT_EQ(Write(), FORMAT_OK);
        return *ReadBytes(ArchivePath());
    }
    FormatResult WriteAsking(OverwriteMode answer) {
        settings_.overwriteMode = OVERWRITE_ASK;
        archiveAnswer = answer;
        return Write();
    }

    static FormatResult OnPathCheck(const std::u16string* path, std::u16string* other,
                                    void* context) {
        auto& self = *static_cast<WriteArchiveOutcomesTest*>(context);
        self.checkedPaths.push_back(*path);
        if (self.redirects > 0) {
            --self.redirects;
            *other = (self.folder_.Native() / "other").u16string() + u"/";
            return FORMAT_RETRY_FOLDER;
        }
        return self.pathCheckAnswer;
    }
    void CheckPaths() {
        settings_.onArchivePathCheck = OnPathCheck;
        settings_.callbackContexts[CALLBACK_ARCHIVE_PATH_CHECK] = this;
    }

    std::vector<std::u16string> checkedPaths;
    int redirects = 0;
    FormatResult pathCheckAnswer = FORMAT_OK;
};

TEST_F(WriteArchiveOutcomesTest, ExistingArchiveIsAskedAboutOnlyInModeAsk) {
    const Bytes old = OldArchive();
    settings_.onArchiveExists = nullptr;
    EXPECT_EQ(WriteAsking(OVERWRITE_REPLACE), FORMAT_CANCELLED);
    settings_.onArchiveExists = OnArchiveExists;
    EXPECT_EQ(WriteAsking(OVERWRITE_CANCEL), FORMAT_CANCELLED);
    EXPECT_EQ(WriteAsking(OVERWRITE_SKIP), FORMAT_OK);
    EXPECT_EQ(askedAbout, (std::vector<std::string>{"archive.dcf", "archive.dcf"}));
    EXPECT_EQ(ReadBytes(ArchivePath()), old);
    EXPECT_EQ(LeftInFolder(), std::set<std::string>{"archive.dcf"});

    // A numbered name leaves the old archive as it is (the counting is the numbered names' test).
    EXPECT_EQ(WriteAsking(OVERWRITE_NUMBERED), FORMAT_OK);
    EXPECT_EQ(LeftInFolder(), (std::set<std::string>{"archive.dcf", "archive (1).dcf"}));
    EXPECT_EQ(ReadBytes(ArchivePath()), old);

    // In any other mode the archive is replaced without a question, 101 and 102 included.
    askedAbout.clear();
    for (const OverwriteMode mode : {OVERWRITE_REPLACE, OVERWRITE_SKIP, OVERWRITE_NUMBERED}) {
        const Bytes before = *ReadBytes(ArchivePath());
        settings_.overwriteMode = mode;
        EXPECT_EQ(Write(), FORMAT_OK);
        EXPECT_NE(ReadBytes(ArchivePath()), before);
    }
    EXPECT_TRUE(askedAbout.empty());
    EXPECT_EQ(LeftInFolder().size(), 2u);
}

TEST_F(WriteArchiveOutcomesTest, ExtensionIsAddedUnlessTheNameEndsInItInAnyCase) {
    request_.archiveName = u"Upper.DCF";
    ASSERT_EQ(Write(), FORMAT_OK);
    request_.archiveName = u"plain.txt";
    ASSERT_EQ(Write(), FORMAT_OK);
    EXPECT_EQ(LeftInFolder(), (std::set<std::string>{"Upper.DCF", "plain.txt.dcf"}));
}

TEST_F(WriteArchiveOutcomesTest, NumberedNamesNeedADotBehindTheFirstCharacter) {
    EXPECT_FALSE(NumberedArchivePath(u""));
    EXPECT_FALSE(NumberedArchivePath(u"nodot"));
    EXPECT_FALSE(NumberedArchivePath(u".dcf"));
    const std::u16string base = folder_.Path(u"x.y.dcf");
    EXPECT_EQ(NumberedArchivePath(base), folder_.Path(u"x.y (1).dcf"));
    std::ofstream(folder_.Native() / "x.y (1).dcf").put('1');
    EXPECT_EQ(NumberedArchivePath(base), folder_.Path(u"x.y (2).dcf"));
}

TEST_F(WriteArchiveOutcomesTest, PathCheckRedirectsToAnotherFolderOrEndsTheWrite) {
    const Bytes old = OldArchive();
    CheckPaths();
    pathCheckAnswer = 7;
    EXPECT_EQ(Write(), 7);
    EXPECT_EQ(ReadBytes(ArchivePath()), old);

    fs::create_directory(folder_.Native() / "other");
    checkedPaths.clear();
    pathCheckAnswer = FORMAT_OK;
    redirects = 1;
    ASSERT_EQ(Write(), FORMAT_OK);
    const fs::path moved = folder_.Native() / "other" / "archive.dcf";
    EXPECT_EQ(checkedPaths,
              (std::vector<std::u16string>{ArchivePath().u16string(), moved.u16string()}));
    EXPECT_EQ(lastRequest_.archiveName, moved.u16string());
    EXPECT_EQ(ReadBytes(ArchivePath()), old);
    EXPECT_EQ(Extract(dcf_, moved, u"secret"), FORMAT_OK);
}

TEST_F(WriteArchiveOutcomesTest, RefusedRequestsTouchNothing) {
    const Bytes old = OldArchive();
    EXPECT_EQ(dcf_.WriteArchive(nullptr, &settings_), FORMAT_BAD_ARGUMENT);
    EXPECT_EQ(dcf_.WriteArchive(&request_, nullptr), FORMAT_BAD_ARGUMENT);

    request_.password = std::u16string(65, u'x');
    EXPECT_EQ(Write(), FORMAT_BAD_ARGUMENT);
    request_.password = u"pw";
    // A recipient key that nobody could open the archive with.
    request_.sealForKey = true;
    request_.securityKey.SetPublicKeyText(std::string(1024, 'f'));
    EXPECT_EQ(Write(), FORMAT_BAD_ARGUMENT);
    request_.sealForKey = false;
    ArchiveWriteItem huge;
    huge.path = (SourceRoot() / "huge").u16string();
    huge.size = (std::uint64_t{1} << 31) * 2048;  // 2^31 whole pieces
    request_.items.push_back(huge);
    EXPECT_EQ(Write(), FORMAT_BAD_ARGUMENT);
    request_.items.back().path = u"/elsewhere/huge";  // not under the root's folder
    EXPECT_EQ(Write(), FORMAT_BAD_ARGUMENT);
    // Names the reader would refuse: a ':' in a component, and the root listed with a final
    // separator, which gives the empty name "\".
    request_.items.back().path = (SourceRoot() / "a:b").u16string();
    EXPECT_EQ(Write(), FORMAT_BAD_ARGUMENT);
    request_.items.pop_back();
    request_.rootPath = (SourceRoot() / "").u16string();
    ArchiveWriteItem root;
    root.path = request_.rootPath;
    root.isFolder = true;
    request_.items.push_back(root);
    EXPECT_EQ(Write(), FORMAT_BAD_ARGUMENT);
    request_.rootPath = SourceRoot().u16string();
    EXPECT_EQ(ReadBytes(ArchivePath()), old);
}

TEST_F(WriteArchiveOutcomesTest, OldArchiveThatCannotBeDeletedStays) {
    fs::create_directories(ArchivePath() / "inside");
    EXPECT_EQ(Write(), FORMAT_REPLACE_FAILED);
    EXPECT_TRUE(fs::is_directory(ArchivePath() / "inside"));
    EXPECT_EQ(LeftInFolder(), std::set<std::string>{"archive.dcf"});
}

TEST_F(WriteArchiveOutcomesTest, FailuresAfterTheDeleteLeaveNeitherArchiveNorTemporaryFile) {
    OldArchive();
    request_.sealForKey = true;  // without a public key
    EXPECT_EQ(Write(), FORMAT_NO_PUBLIC_KEY);
    EXPECT_TRUE(LeftInFolder().empty());
    request_.sealForKey = false;

    OldArchive();
    done.clear();
    cancelAfterFiles = 1;  // between entries
    EXPECT_EQ(Write(), FORMAT_CANCELLED);
    EXPECT_TRUE(LeftInFolder().empty());
    EXPECT_EQ(done.size(), 1u);

    recorder_.cancel = 0;

    DCCFileFormatSFX missingStub((folder_.Native() / "no-stub").u16string());
    EXPECT_EQ(Write(missingStub), FORMAT_STUB_COPY_FAILED);
    EXPECT_TRUE(LeftInFolder().empty());

    if (fs::exists("/proc/self/mem")) {
        // A file that opens but refuses to be read at its start.
        ArchiveWriteItem unreadable;
        unreadable.path = u"/proc/self/mem";
        unreadable.size = 10;
        request_.items = {unreadable};
        request_.rootPath = u"/proc/self";
        EXPECT_EQ(Write(), FORMAT_SOURCE_OPEN_FAILED);
        EXPECT_TRUE(LeftInFolder().empty());
    }
}

// While it lives, every start of the random pool fails.
class FailingPoolStarts {
public:
    FailingPoolStarts() { crypto::random::SetStartSources(NoSources); }
    ~FailingPoolStarts() { crypto::random::SetStartSources(nullptr); }
    FailingPoolStarts(const FailingPoolStarts&) = delete;
    FailingPoolStarts& operator=(const FailingPoolStarts&) = delete;

private:
    static std::unique_ptr<platform::EntropySources> NoSources() { return nullptr; }
};

TEST_F(WriteArchiveOutcomesTest, RandomPoolThatFailsToStartEndsTheWriteBeforeAnyData) {
    OldArchive();
    opened.clear();
    {
        const FailingPoolStarts failing;
        // The key block needs the pool with a password; without one the password needs it first.
        EXPECT_EQ(Write(), FORMAT_OUTPUT_WRITE_FAILED);
        request_.password.Clear();
        request_.passwordGiven = false;
        EXPECT_EQ(Write(), FORMAT_OUTPUT_WRITE_FAILED);
        EXPECT_TRUE(LeftInFolder().empty());
        EXPECT_TRUE(opened.empty());
    }
    // A failed start leaves nothing behind that keeps the next one from working.
    request_.password = u"secret";
    request_.passwordGiven = true;
    EXPECT_EQ(Write(), FORMAT_OK);
    EXPECT_EQ(Extract(u"secret"), FORMAT_OK);
}

}  // namespace
}  // namespace tests
