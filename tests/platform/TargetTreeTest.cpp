#include "platform/TargetTree.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/TestFolder.h"

namespace {

namespace fs = std::filesystem;
using platform::EntryKind;
using platform::kErrorSuccess;
constexpr char16_t kSep = platform::kPathSeparator;

std::string Content(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// A new file with `text` under its final name, written the way extraction writes one.
platform::ErrorCode WriteFile(platform::TargetTree& tree, std::u16string_view folder,
                              const std::u16string& name, const std::string& text) {
    platform::File file;
    std::u16string temp;
    if (const auto error = tree.CreateTempFile(folder, u"st", file, temp); error) {
        return error;
    }
    EXPECT_EQ(file.Write(text.data(), text.size()), kErrorSuccess);
    file.Close();
    return tree.Rename(folder, temp, name);
}

class TargetTreeTest : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(Target());
        fs::create_directory(Outside());
        ASSERT_EQ(tree_.Open(folder_.Root() + kSep + u"target"), kErrorSuccess);
    }
    fs::path Target() const { return folder_.Native() / "target"; }
    fs::path Outside() const { return folder_.Native() / "outside"; }
    // A link in the target; false where this system or user can't make one.
    bool Link(const fs::path& to, const fs::path& at) {
        std::error_code error;
        fs::is_directory(to) ? fs::create_directory_symlink(to, at, error)
                             : fs::create_symlink(to, at, error);
        return !error;
    }

    tests::TestFolder folder_;
    platform::TargetTree tree_;
};

TEST_F(TargetTreeTest, FoldersFilesAndWhatStandsAtAName) {
    ASSERT_EQ(tree_.MakeFolder(u"a"), kErrorSuccess);
    ASSERT_EQ(tree_.MakeFolder(std::u16string(u"a") + kSep + u"b"), kErrorSuccess);
    EXPECT_EQ(tree_.MakeFolder(u"a"), platform::kErrorAlreadyExists);
    const std::u16string ab = std::u16string(u"a") + kSep + u"b";
    ASSERT_EQ(WriteFile(tree_, ab, u"f", "one"), kErrorSuccess);
    EXPECT_EQ(Content(Target() / "a" / "b" / "f"), "one");

    EntryKind kind{};
    platform::FileIdentity identity;
    platform::FileIdentity other;
    ASSERT_EQ(tree_.Look(ab, u"f", kind, identity), kErrorSuccess);
    EXPECT_EQ(kind, EntryKind::File);
    ASSERT_EQ(tree_.Look(u"", u"a", kind, other), kErrorSuccess);
    EXPECT_EQ(kind, EntryKind::Folder);
    EXPECT_NE(identity, other);
    ASSERT_EQ(tree_.Look(u"a", u"none", kind, other), kErrorSuccess);
    EXPECT_EQ(kind, EntryKind::Missing);
    // The identity of an open file is the one its name shows.
    platform::File open;
    ASSERT_EQ(open.Open(folder_.Root() + kSep + u"target" + kSep + ab + kSep + u"f",
                        platform::OpenMode::Read),
              kErrorSuccess);
    ASSERT_EQ(platform::IdentityOf(open, other), kErrorSuccess);
    EXPECT_EQ(identity, other);
    open.Close();  // Windows renames nothing over an open file

    // A second file under the same name replaces the first; a folder is never removed.
    ASSERT_EQ(WriteFile(tree_, ab, u"f", "two"), kErrorSuccess);
    EXPECT_EQ(Content(Target() / "a" / "b" / "f"), "two");
    EXPECT_NE(tree_.RemoveFile(u"a", u"b"), kErrorSuccess);
    EXPECT_NE(WriteFile(tree_, u"", u"a", "x"), kErrorSuccess);
    EXPECT_TRUE(fs::is_directory(Target() / "a"));
    EXPECT_EQ(tree_.RemoveFile(ab, u"f"), kErrorSuccess);
    EXPECT_FALSE(fs::exists(Target() / "a" / "b" / "f"));
    // Only what the archive could never name leaves the target: such names are refused.
    for (const std::u16string bad : {u"", u"..", u"a/b", u"a\\b"}) {
        EXPECT_EQ(tree_.Look(u"", bad, kind, other), platform::kErrorInvalidName);
        EXPECT_EQ(tree_.RemoveFile(u"", bad), platform::kErrorInvalidName);
    }
    EXPECT_NE(tree_.MakeFolder(u".."), kErrorSuccess);
    EXPECT_NE(WriteFile(tree_, u"..", u"f", "x"), kErrorSuccess);
    EXPECT_TRUE(fs::is_empty(Outside()));
}

// Code that takes only paths (the tagger) gets one that stays in the folder we hold, even when
// that folder is moved away and a link to the outside takes its name.
TEST_F(TargetTreeTest, PathsOfNamesStayInTheFoldersWeHold) {
    ASSERT_EQ(tree_.MakeFolder(u"d"), kErrorSuccess);
    ASSERT_EQ(WriteFile(tree_, u"d", u"first", "x"), kErrorSuccess);
    std::error_code error;
    fs::rename(Target() / "d", Target() / "moved", error);
    if (error) {
        // Windows: nobody renames a folder while we hold it.
        EXPECT_EQ(kSep, u'\\') << error.message();
        return;
    }
    if (!Link(Outside(), Target() / "d")) {
        GTEST_SKIP() << "no symbolic links here";
    }
    const std::u16string path = tree_.PathOf(u"d", u"tagged");
    ASSERT_FALSE(path.empty());
    std::ofstream(fs::path(path)) << "tag";
    EXPECT_TRUE(fs::is_empty(Outside()));
    EXPECT_EQ(Content(Target() / "moved" / "tagged"), "tag");
}

// Deeper than the folders kept open: going down, up and across reaches the right folders, and
// a branch moved away while we work is walked again from the target.
TEST_F(TargetTreeTest, DeepBranchesUpDownAndAcross) {
    constexpr int kDepth = 150;
    std::u16string path;
    fs::path native = Target();
    for (int level = 0; level < kDepth; ++level) {
        path += (level == 0 ? u"" : std::u16string(1, kSep)) + u"d";
        native /= "d";
        ASSERT_EQ(tree_.MakeFolder(path), kErrorSuccess) << level;
    }
    ASSERT_EQ(WriteFile(tree_, path, u"deep", "deep"), kErrorSuccess);
    const std::u16string shallow = path.substr(0, 9);  // d/d/d/d/d
    ASSERT_EQ(WriteFile(tree_, shallow, u"up", "up"), kErrorSuccess);
    ASSERT_EQ(WriteFile(tree_, path, u"again", "again"), kErrorSuccess);
    ASSERT_EQ(WriteFile(tree_, u"", u"top", "top"), kErrorSuccess);
    EXPECT_EQ(Content(native / "deep"), "deep");
    EXPECT_EQ(Content(Target() / "d" / "d" / "d" / "d" / "d" / "up"), "up");
    EXPECT_EQ(Content(native / "again"), "again");
    EXPECT_EQ(Content(Target() / "top"), "top");

    // Move the lower part of the branch up to the target while its deepest folder is open. The
    // way up from there no longer passes the folders we came through; without the check it would
    // climb above the target.
    fs::path middle = Target();
    for (int level = 0; level < 60; ++level) {
        middle /= "d";
    }
    ASSERT_EQ(WriteFile(tree_, path, u"before", "x"), kErrorSuccess);
    std::error_code error;
    fs::rename(middle, Target() / "moved", error);
    if (error) {
        // Windows holds every folder of the branch open, and none of them can move.
        EXPECT_EQ(kSep, u'\\') << error.message();
        return;
    }
    ASSERT_EQ(WriteFile(tree_, shallow, u"after", "x"), kErrorSuccess);
    EXPECT_EQ(Content(Target() / "d" / "d" / "d" / "d" / "d" / "after"), "x");
    EXPECT_TRUE(fs::is_empty(Outside()));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.Native()), fs::directory_iterator()), 2);
}

}  // namespace
