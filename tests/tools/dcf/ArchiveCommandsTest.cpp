// dcf extract, list, test and info, run as a program on images made record by record.
#include <gtest/gtest.h>
#include <signal.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/RecipientKey.h"
#include "tests/TestFolder.h"
#include "tests/archive/ImageBuilder.h"
#include "tests/tools/dcf/DcfProgram.h"

namespace {

using namespace dcftest;
using dcftest::WriteAll;  // beside the overload for bytes below
using tests::Bytes;

void WriteAll(const fs::path& path, const Bytes& bytes) {
    WriteAll(path, std::string(bytes.begin(), bytes.end()));
}

class ArchiveCommandsTest : public ::testing::Test {
protected:
    void SetUp() override {
        content_ = tests::Noise(5000, 3);
        image_ = tests::BuildImage(
            tests::ImageSettings{}, {u"\\d"},
            {{u"\\d\\a", content_, tests::OneCategoryBlock()}, {u"\\d\\b", Bytes(20, 'b'), {}}},
            tests::OneCategoryBlock(), &at_);
        WriteAll(Archive(), image_);
        WriteAll(PasswordFile(), std::string("secret\n"));
    }

    fs::path Path(const std::string& name) const { return folder_.Native() / name; }
    fs::path Archive() const { return Path("archive.dcf"); }
    fs::path PasswordFile() const { return Path("password"); }
    std::string WithPassword() const { return " --password-file " + Quoted(PasswordFile()); }

    Outcome Dcf(const std::string& arguments, const std::string& input = "") {
        return RunDcf(folder_.Native(), arguments, input);
    }

    tests::TestFolder folder_;
    Bytes content_;
    Bytes image_;
    // Where the records begin: preamble, key block, folder header, end of header, names, a's
    // header, tag block and three chunks, b's header and chunk.
    std::vector<std::size_t> at_;
};

TEST_F(ArchiveCommandsTest, ListAndTestReadEveryEntryAndWriteNothing) {
    const Outcome listed = Dcf("list --json archive.dcf" + WithPassword());
    ASSERT_EQ(listed.code, 0) << listed.err;
    const auto json = nlohmann::json::parse(listed.out);
    ASSERT_EQ(json["files"].size(), 2u);
    EXPECT_EQ(json["files"][0]["name"], "d/a");
    // The entry's header, tag block and three chunks, as the image holds them.
    EXPECT_EQ(json["files"][0]["packedSize"], at_[10] - at_[5]);

    const Outcome tested = Dcf("test archive.dcf" + WithPassword());
    ASSERT_EQ(tested.code, 0) << tested.err;
    EXPECT_NE(tested.out.find("OK, 2 files, 1 folder, 5020 bytes"), std::string::npos);
    EXPECT_FALSE(fs::exists(Path("d")));

    // Damage in the first file's compressed data is found by test and named by its entry.
    Bytes damaged = image_;
    damaged[at_[8] + 16 + 40] ^= 0x20;  // inside a's second chunk
    WriteAll(Path("damaged.dcf"), damaged);
    ExpectFailure(Dcf("test damaged.dcf" + WithPassword()), kDamaged, "test",
                  "damaged.dcf (in entry d/a)");
}

// A name may hold terminal controls: the lines of list show them escaped, as bsdtar does; JSON
// has its own escapes.
TEST_F(ArchiveCommandsTest, ListEscapesControlCharactersOfNames) {
    const std::u16string name = u"\\\x1b]0;title\x07\u009b2J\u00e9\ttab";
    WriteAll(Path("controls.dcf"),
             tests::BuildImage(tests::ImageSettings{}, {}, {{name, Bytes(1, 'c'), {}}}));
    const Outcome plain = Dcf("list controls.dcf" + WithPassword());
    ASSERT_EQ(plain.code, 0) << plain.err;
    EXPECT_EQ(plain.out, "          1 \\033]0;title\\a\\302\\2332J\xC3\xA9\\ttab\n");
    const Outcome json = Dcf("list --json controls.dcf" + WithPassword());
    ASSERT_EQ(json.code, 0) << json.err;
    EXPECT_EQ(nlohmann::json::parse(json.out)["files"][0]["name"],
              "\x1b]0;title\x07\xC2\x9B"
              "2J\xC3\xA9\ttab");
}

TEST_F(ArchiveCommandsTest, MembersSelectEntriesByNameOrPattern) {
    const auto names = [&](const std::string& arguments) {
        const Outcome listed = Dcf("list --json archive.dcf " + arguments + WithPassword());
        EXPECT_EQ(listed.code, 0) << listed.err;
        const auto json = nlohmann::json::parse(listed.out);
        std::vector<std::string> found;
        for (const auto& file : json["files"]) {
            found.push_back(file["name"]);
        }
        return found;
    };
    EXPECT_EQ(names("d/b"), std::vector<std::string>{"d/b"});
    EXPECT_EQ(names("'d/[!b]'"), std::vector<std::string>{"d/a"});
    EXPECT_EQ(names("d/"), (std::vector<std::string>{"d/a", "d/b"}));  // a folder, all it holds

    ASSERT_EQ(Dcf("extract archive.dcf 'd/?' -C one --strip-components 1" + WithPassword()).code,
              0);
    EXPECT_EQ(ReadAll(Path("one/b")), std::string(20, 'b'));

    ExpectFailure(Dcf("extract archive.dcf d/zz" + WithPassword()), 1, "extract",
                  "nothing in the archive matches \"d/zz\"");
}

TEST_F(ArchiveCommandsTest, PasswordSources) {
    // The first line of the file counts, without its line end and a byte order mark.
    for (const std::string text : {"secret\r\nsecond line", "\xEF\xBB\xBFsecret\n"}) {
        WriteAll(PasswordFile(), text);
        EXPECT_EQ(Dcf("test -q archive.dcf" + WithPassword()).code, 0) << text;
    }
    WriteAll(PasswordFile(), std::string("secret \n"));
    EXPECT_EQ(Dcf("test -q archive.dcf" + WithPassword()).code, kBadKey);

    ExpectFailure(Dcf("test -q archive.dcf --password-stdin", "Secret\n"), kBadKey, "test",
                  "archive.dcf");

    // An empty password opens nothing of ours: it is refused, whatever it came from.
    WriteAll(PasswordFile(), std::string("\n"));
    ExpectFailure(Dcf("test archive.dcf" + WithPassword()), kUsage, "test",
                  "the password is empty");

    // No key option and no terminal to ask on: a usage error, and no target folder is made.
    ExpectFailure(Dcf("extract archive.dcf -C none"), kUsage, "extract", "--password-file");
    EXPECT_FALSE(fs::exists(Path("none")));
}

TEST_F(ArchiveCommandsTest, ExitCodesAndMessagesByClassOfFailure) {
    Bytes badHeader = image_;
    badHeader[at_[2] + 3] ^= 1;
    WriteAll(Path("bad.dcf"), badHeader);
    WriteAll(Path("escape.dcf"),
             tests::BuildImage(tests::ImageSettings{}, {},
                               {{u"\\ok", Bytes(3, 'o'), {}}, {u"\\..\\evil", Bytes(4, 'e'), {}}}));
    WriteAll(Path("plain.txt"), std::string(4000, 't'));
    Bytes longPreamble = image_;
    longPreamble[16] = 0x7F;  // a preamble length far beyond the file
    WriteAll(Path("long.dcf"), longPreamble);
    WriteAll(Path("blocker"), std::string("x"));
    struct Row {
        std::string arguments;
        int code;
        std::string command, needle;
    };
    const std::string password = WithPassword();
    for (const Row& row :
         {Row{"extract nothing.dcf -C out" + password, kIo, "extract",
              "nothing.dcf: No such file or directory"},
          Row{"extract bad.dcf -C out" + password, kDamaged, "extract",
              "bad.dcf (in the folder header)"},
          // Named before anything is written.
          Row{"extract escape.dcf -C out/deep" + password, kDamaged, "extract",
              "would leave the target folder, \"../evil\""},
          Row{"info plain.txt", kDamaged, "info", "plain.txt: not a DCF archive"},
          Row{"info long.dcf", kDamaged, "info",
              "long.dcf: damaged: the category preamble runs past the end"},
          Row{"extract archive.dcf -C blocker/sub" + password, kIo, "extract", "blocker/sub"}}) {
        ExpectFailure(Dcf(row.arguments), row.code, row.command, row.needle);
        EXPECT_FALSE(fs::exists(Path("out")));  // a folder made for nothing is gone again
    }
}

// Replacing and skipping are the reader's; without a terminal "ask" can't ask and stops like
// "cancel", before anything is written.
TEST_F(ArchiveCommandsTest, OverwriteModesThatStop) {
    for (const std::string mode : {"cancel", "ask"}) {
        SCOPED_TRACE(mode);
        fs::remove_all(Path("out"));
        WriteAll(Path("out") / "d" / "a", std::string("old"));
        ExpectFailure(Dcf("extract archive.dcf -C out --overwrite " + mode + WithPassword()),
                      kCancelled, "extract", "stopped at d/a, which exists in out");
        EXPECT_EQ(ReadAll(Path("out") / "d" / "a"), "old");
        EXPECT_FALSE(fs::exists(Path("out") / "d" / "b"));
    }
}

TEST_F(ArchiveCommandsTest, ArchiveIsNeverReplacedByWhatItHolds) {
    // The archive's own name comes out of it, and the paths name it in other forms than the
    // target does: dcf knows it by what it is, not by its name.
    const Bytes large = tests::Noise(600'000, 8);
    const Bytes image = tests::BuildImage(
        tests::ImageSettings{}, {}, {{u"\\next", Bytes(9, 'n'), {}}, {u"\\self.dcf", large, {}}});
    WriteAll(Path("self.dcf"), image);
    fs::create_directory(Path("sub"));
    ExpectFailure(Dcf("extract sub/../self.dcf -C . --overwrite replace" + WithPassword()), kIo,
                  "extract", "./self.dcf: that is the archive being read");
    EXPECT_EQ(ReadAll(Path("self.dcf")), std::string(image.begin(), image.end()));

    const Outcome skipped = Dcf("extract self.dcf -C . --overwrite skip" + WithPassword());
    ASSERT_EQ(skipped.code, 0) << skipped.err;
    EXPECT_EQ(ReadAll(Path("self.dcf")), std::string(image.begin(), image.end()));
    EXPECT_EQ(ReadAll(Path("next")), std::string(9, 'n'));
}

// Something in the target that can't be replaced ends the run with the I/O code and a message
// that names the file, what is in the way and what to do.
TEST_F(ArchiveCommandsTest, TargetsThatCannotBeMadeEndWithTheIoCode) {
    struct Row {
        std::string obstacle;
        std::string needle;
    };
    for (const Row& row : {Row{"file d", "out/d/a: a file stands where a folder"},
                           Row{"link d", "out/d/a: a link stands where a folder"},
                           Row{"folder d/a", "out/d/a: a folder of that name is in the way"},
                           Row{"link d/a", "out/d/a: a link or special file"}}) {
        SCOPED_TRACE(row.obstacle);
        fs::remove_all(Path("out"));
        fs::create_directory(Path("out"));
        if (row.obstacle == "file d") {
            WriteAll(Path("out") / "d", "x");
        } else if (row.obstacle == "link d") {
            fs::create_directory_symlink(Path("elsewhere"), Path("out") / "d");
        } else if (row.obstacle == "folder d/a") {
            fs::create_directories(Path("out") / "d" / "a");
        } else {
            fs::create_directory(Path("out") / "d");
            fs::create_symlink(PasswordFile(), Path("out") / "d" / "a");
        }
        ExpectFailure(Dcf("extract archive.dcf -C out --overwrite replace" + WithPassword()), kIo,
                      "extract", row.needle);
    }
    EXPECT_EQ(ReadAll(PasswordFile()), "secret\n");
    EXPECT_FALSE(fs::exists(Path("elsewhere")));
}

// Ctrl-C, SIGTERM and SIGHUP while a file is written: the run stops in order, and no file is
// left cut short under its name, nor a temporary one.
TEST_F(ArchiveCommandsTest, SignalsLeaveNoHalfWrittenFile) {
    const Bytes zeros(64u << 20, 0);
    WriteAll(Path("big.dcf"),
             tests::BuildImage(tests::ImageSettings{}, {}, {{u"\\big", zeros, {}}}));
    for (const int signal : {SIGINT, SIGHUP}) {
        SCOPED_TRACE(signal);
        fs::remove_all(Path("out"));
        const int dcf = StartDcf(folder_.Native(), "extract big.dcf -C out" + WithPassword());
        const bool writing = WaitForTemporaryFile(Path("out"), 1);
        ::kill(dcf, signal);
        const Outcome stopped = FinishDcf(folder_.Native(), dcf);
        ASSERT_TRUE(writing);
        if (stopped.code == 0) {
            continue;  // it was faster than the signal: the file is complete, as checked below
        }
        EXPECT_EQ(stopped.code, kCancelled) << stopped.err;
        if (!fs::exists(Path("out"))) {
            continue;  // the target folder it made went again, empty
        }
        for (const auto& entry : fs::recursive_directory_iterator(Path("out"))) {
            ADD_FAILURE() << "left behind: " << entry.path();
        }
    }
    if (fs::exists(Path("out") / "big")) {
        EXPECT_EQ(fs::file_size(Path("out") / "big"), zeros.size());
    }
}

TEST_F(ArchiveCommandsTest, PrivateKeyOpensTheRsaSlot) {
    ASSERT_EQ(Zelmarik::WriteKeyPairFiles(tests::Recipient().pair, folder_.Path(u"r.privkey"),
                                          folder_.Path(u"r.pubkey"), false),
              0u);
    tests::ImageSettings settings;
    settings.modulus = tests::Recipient().modulus.data();
    settings.password = u"unknown to the recipient";
    WriteAll(Path("sealed.dcf"), tests::BuildImage(settings, {}, {{u"\\k", content_, {}}}));
    const std::string key = " --key r.privkey";
    const Outcome opened = Dcf("extract sealed.dcf -C out" + key);
    ASSERT_EQ(opened.code, 0) << opened.err;
    EXPECT_EQ(ReadAll(Path("out") / "k"), std::string(content_.begin(), content_.end()));

    // The archive of this fixture was sealed for nobody: the key opens nothing.
    ExpectFailure(Dcf("list archive.dcf" + key), kBadKey, "list", "archive.dcf");

    ExpectFailure(Dcf("list sealed.dcf --key r.pubkey"), kBadKey, "list",
                  "this is a public key; give the .privkey");
}

TEST_F(ArchiveCommandsTest, PasswordIsAskedOnTheTerminalEvenWithOutputRedirected) {
    if (!CanRunOnTerminal()) {
        GTEST_SKIP() << "no script(1) to make a terminal";
    }
    EXPECT_EQ(RunDcfOnTerminal(folder_.Native(), "list archive.dcf >listing",
                               {{"Password for", "secret"}}),
              0);
    const std::string transcript = ReadAll(Path("transcript"));
    EXPECT_NE(transcript.find("Password for archive.dcf: "), std::string::npos) << transcript;
    EXPECT_EQ(transcript.find("secret"), std::string::npos) << transcript;
    EXPECT_NE(ReadAll(Path("listing")).find("d/a"), std::string::npos);

    // Ctrl-C at the prompt: the message stands on a line of its own, not behind the "^C".
    EXPECT_EQ(RunDcfOnTerminal(folder_.Native(), "test archive.dcf", {{"Password for", "\x03"}}),
              kCancelled);
    EXPECT_NE(ReadAll(Path("transcript")).find("\r\ndcf test: no password entered"),
              std::string::npos)
        << ReadAll(Path("transcript"));
}

TEST_F(ArchiveCommandsTest, FilesInTheWayAreAskedAboutOnATerminal) {
    if (!CanRunOnTerminal()) {
        GTEST_SKIP() << "no script(1) to make a terminal";
    }
    WriteAll(Path("out/d/a"), std::string("old a"));
    WriteAll(Path("out/d/b"), std::string("old b"));
    // "x" is no answer and is asked again; "n" keeps a, "y" replaces b.
    EXPECT_EQ(RunDcfOnTerminal(folder_.Native(),
                               "extract archive.dcf -C out --overwrite ask" + WithPassword(),
                               {{"Replace it", "x"}, {"Replace it", "n"}, {"Replace it", "Y"}}),
              0)
        << ReadAll(Path("transcript"));
    EXPECT_NE(ReadAll(Path("transcript")).find("exists. Replace it? [y]es, [n]o, [a]ll, [q]uit: "),
              std::string::npos);
    EXPECT_EQ(ReadAll(Path("out/d/a")), "old a");
    EXPECT_EQ(ReadAll(Path("out/d/b")), std::string(20, 'b'));
}

}  // namespace
