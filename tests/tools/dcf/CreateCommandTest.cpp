// dcf create, run as a program, with what it made read back by dcf extract, list and info.
#include <gtest/gtest.h>
#include <signal.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/TestFolder.h"
#include "tests/tools/dcf/DcfProgram.h"

namespace {

using namespace dcftest;

class CreateCommandTest : public ::testing::Test {
protected:
    void SetUp() override {
        WriteAll(Path("data/reports/2021/a.txt"), "annual report");
        std::string noise(70000, '\0');
        for (std::size_t i = 0; i < noise.size(); ++i) {
            noise[i] = static_cast<char>((i * 2654435761u) >> 13);
        }
        WriteAll(Path("data/reports/b.bin"), noise);
        WriteAll(Path("data/reports/\xC3\xBC\xC3\xB1\xC3\xAF.txt"), "non-ASCII name");
        WriteAll(Path("data/notes/n.txt"), "a note");
        fs::create_directories(Path("data/reports/empty"));
        WriteAll(Path("password"), "secret\n");
    }

    fs::path Path(const std::string& name) const { return folder_.Native() / name; }

    Outcome Dcf(const std::string& arguments, const std::string& input = "") {
        return RunDcf(folder_.Native(), arguments, input);
    }

    // The names in an archive, as list --json gives them: folders with a final '/'.
    std::vector<std::string> Names(const std::string& archive) {
        const Outcome listed = Dcf("list --json " + archive + " --password-file password");
        EXPECT_EQ(listed.code, 0) << listed.err;
        const auto json = nlohmann::json::parse(listed.out);
        std::vector<std::string> names;
        for (const auto& folder : json["folders"]) {
            names.push_back(folder.get<std::string>() + "/");
        }
        for (const auto& file : json["files"]) {
            names.push_back(file["name"]);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    // Archives and temporary files in the test folder.
    std::vector<std::string> Archives() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_.Native())) {
            const std::string name = entry.path().filename().string();
            if (name.find(".dcf") != std::string::npos || name.find(".exe") != std::string::npos ||
                (name.rfind("st", 0) == 0 && name.ends_with(".tmp"))) {
                names.push_back(name);
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    tests::TestFolder folder_;
};

TEST_F(CreateCommandTest, PathsFromSeveralFoldersKeepTheirLastNames) {
    WriteAll(Path("other/x.txt"), "elsewhere");
    WriteAll(Path("data/reports/2021/scratch.tmp"), "left out");
    const Outcome created =
        Dcf("create new data/reports data/notes/ data/reports other/x.txt --exclude '*.tmp' "
            "--exclude reports/b.bin --password-file password");
    ASSERT_EQ(created.code, 0) << created.err;
    EXPECT_NE(created.out.find("new.dcf: 4 files, 4 folders"), std::string::npos) << created.out;
    EXPECT_NE(created.err.find("scratch.tmp: matched by --exclude; left out"), std::string::npos);
    EXPECT_EQ(Names("new.dcf"),
              (std::vector<std::string>{"notes/", "notes/n.txt", "reports/", "reports/2021/",
                                        "reports/2021/a.txt", "reports/empty/",
                                        "reports/\xC3\xBC\xC3\xB1\xC3\xAF.txt", "x.txt"}));

    ASSERT_EQ(Dcf("extract new.dcf -C out --password-stdin", "secret\n").code, 0);
    EXPECT_EQ(ReadAll(Path("out/reports/2021/a.txt")), "annual report");
    EXPECT_EQ(ReadAll(Path("out/reports/\xC3\xBC\xC3\xB1\xC3\xAF.txt")), "non-ASCII name");
    EXPECT_EQ(ReadAll(Path("out/x.txt")), "elsewhere");
    EXPECT_TRUE(fs::is_directory(Path("out/reports/empty")));

    // A single file is stored under its own name; the same name from two places is refused.
    ASSERT_EQ(Dcf("create one.dcf data/notes/n.txt --password-file password -q").code, 0);
    EXPECT_EQ(Names("one.dcf"), std::vector<std::string>{"n.txt"});
    WriteAll(Path("other/n.txt"), "another n");
    ExpectFailure(Dcf("create two data/notes/n.txt other/n.txt --password-file password"), kUsage,
                  "create", "would both be stored as n.txt");
}

TEST_F(CreateCommandTest, WhatCannotBeStoredIsLeftOutWithANote) {
    for (const char* name :
         {"back\\slash.txt", "colon:name.txt", "aux.txt", "dot.", "blank ", "latin\xE9.txt"}) {
        WriteAll(Path(std::string("data/notes/") + name), "left out");
    }
    WriteAll(Path("data/notes/kept. x"), "kept");
    fs::create_symlink("n.txt", Path("data/notes/link"));
    fs::create_symlink("nowhere", Path("data/notes/dangling"));
    // Unreadable files and folders alike; and the archive itself, which lies among its sources.
    WriteAll(Path("data/notes/locked/inside.txt"), "unseen");
    WriteAll(Path("data/notes/locked.txt"), "unseen");
    fs::permissions(Path("data/notes/locked"), fs::perms::none);
    fs::permissions(Path("data/notes/locked.txt"), fs::perms::none);
    WriteAll(Path("data/notes/odd.dcf"), "an older archive of that name");

    const Outcome created =
        Dcf("create data/notes/odd data/notes --password-file password --overwrite replace");
    fs::permissions(Path("data/notes/locked"), fs::perms::owner_all);
    ASSERT_EQ(created.code, 0) << created.err;
    for (const char* note :
         {"colon:name.txt: a name that Windows can't extract", "back\\\\slash.txt: a backslash",
          "latin\\xE9.txt: a name that is not UTF-8", "dangling: a link that points nowhere",
          "link: a link: the file it points to is stored", "locked: Permission denied, with all",
          "locked.txt: Permission denied; left out", "odd.dcf: the archive being written"}) {
        EXPECT_NE(created.err.find(note), std::string::npos) << note << '\n' << created.err;
    }
    EXPECT_EQ(std::count(created.err.begin(), created.err.end(), '\n'), 11) << created.err;
    EXPECT_NE(created.out.find("odd.dcf: 3 files, 1 folder"), std::string::npos) << created.out;
    EXPECT_NE(created.out.find("10 left out"), std::string::npos) << created.out;
    EXPECT_EQ(Names("data/notes/odd.dcf"),
              (std::vector<std::string>{"notes/", "notes/kept. x", "notes/link", "notes/n.txt"}));
    ASSERT_EQ(Dcf("extract data/notes/odd.dcf -C out --password-file password").code, 0);
    EXPECT_EQ(ReadAll(Path("out/notes/link")), "a note");
}

TEST_F(CreateCommandTest, ArgumentsThatCannotMakeAnArchiveAreRefusedInOneLine) {
    WriteAll(Path("bom"), "\xEF\xBB\xBF\n");
    WriteAll(Path("bad.pubkey"), "0123");
    fs::create_directories(Path("locked"));
    fs::permissions(Path("locked"), fs::perms::owner_read | fs::perms::owner_exec);
    struct Case {
        std::string arguments;
        std::string input;
        int code;
        std::string needle;
        std::string command = "create";  // whose failure it is: "" for the command line
    };
    const std::string reports = "create a data/reports ";
    for (const Case& refused : std::vector<Case>{
             {"create a data/nowhere --password-file password", "", kIo, "data/nowhere"},
             {"create a 'data/latin\xE9' --password-file password", "", kUsage,
              "latin\\xE9: not UTF-8", ""},
             {reports, "", kUsage, "no terminal to ask for the password"},
             {reports + "--no-password", "", kUsage, "--recipient"},
             {reports + "--password-stdin", std::string(65, 'p'), kUsage, "64 bytes"},
             {reports + "--password-file bom", "", kUsage, "the password is empty"},
             {reports + "--password-stdin", "\xC4\x80x\n", kUsage,
              "nothing of the password is left"},
             {reports + "--no-password --recipient bad.pubkey", "", kUsage, "not a public key"},
             {"create locked/a data/reports --password-file password", "", kIo,
              "locked/a: can't write in its folder: Permission denied"}}) {
        SCOPED_TRACE(refused.arguments);
        ExpectFailure(Dcf(refused.arguments, refused.input), refused.code, refused.command,
                      refused.needle);
    }
    fs::permissions(Path("locked"), fs::perms::owner_all);
    EXPECT_TRUE(Archives().empty());
}

TEST_F(CreateCommandTest, PasswordBeyondLatin1IsWarnedAbout) {
    const Outcome created = Dcf("create cut data/notes --password-stdin",
                                "\xC5\xBE"
                                "abcdefgh\n");  // "žabcdefgh"
    ASSERT_EQ(created.code, 0) << created.err;
    EXPECT_NE(created.err.find("keeps only the low byte of each character beyond Latin-1 "
                               "(\xC5\xBE), so other passwords open it too"),
              std::string::npos)
        << created.err;
    // U+017E and U+007E share their low byte.
    EXPECT_EQ(Dcf("test -q cut.dcf --password-stdin", "~abcdefgh\n").code, 0);
}

TEST_F(CreateCommandTest, ExistingArchiveIsHandledAsTheOptionSays) {
    ASSERT_EQ(Dcf("create a data/reports --password-file password").code, 0);
    const std::string old = ReadAll(Path("a.dcf"));

    // Without a terminal "ask" can't ask: it stops like "cancel".
    ExpectFailure(Dcf("create a data/reports --password-file password"), kCancelled, "create",
                  "--overwrite");
    const Outcome skipped = Dcf("create a data/reports --password-file password --overwrite skip");
    EXPECT_EQ(skipped.code, 0);
    EXPECT_NE(skipped.out.find("stays as it was"), std::string::npos);
    EXPECT_EQ(ReadAll(Path("a.dcf")), old);

    for (int n = 1; n <= 2; ++n) {
        const Outcome numbered =
            Dcf("create a.dcf data/notes --password-file password --overwrite numbered");
        EXPECT_EQ(numbered.code, 0) << numbered.err;
        EXPECT_NE(numbered.out.find("a (" + std::to_string(n) + ").dcf"), std::string::npos);
    }
    EXPECT_EQ(ReadAll(Path("a.dcf")), old);
    ASSERT_EQ(Dcf("create a data/notes --password-file password --overwrite replace").code, 0);
    EXPECT_NE(ReadAll(Path("a.dcf")), old);
    EXPECT_EQ(Archives(), (std::vector<std::string>{"a (1).dcf", "a (2).dcf", "a.dcf"}));
}

// --overwrite replace writes the new archive whole before it takes the old one's place: a
// write that fails, or a signal, leaves the old archive and no temporary file.
TEST_F(CreateCommandTest, ReplacedArchiveStaysUntilTheNewOneIsComplete) {
    std::string noise(4u << 20, '\0');
    std::uint32_t state = 1;
    for (char& c : noise) {
        state = state * 1664525u + 1013904223u;
        c = static_cast<char>(state >> 24);
    }
    WriteAll(Path("data/reports/large.bin"), noise);
    const std::string replace =
        "create a data/reports --password-file password --overwrite replace";

    // A file size limit stands in for a full disk; its signal is ignored, so the write fails.
    const std::string limited = "cd " + Quoted(folder_.Native()) +
                                " && (trap '' XFSZ; ulimit -f 1000; \"" DCF_TOOL_PATH "\" " +
                                replace + " >/dev/null 2>&1; echo $? >rc)";
    ASSERT_EQ(Dcf("create a data/notes --password-file password --overwrite replace").code, 0);
    const std::string before = ReadAll(Path("a.dcf"));
    ASSERT_EQ(std::system(limited.c_str()), 0);
    EXPECT_EQ(ReadAll(Path("rc")), "5\n");
    EXPECT_EQ(ReadAll(Path("a.dcf")), before);
    EXPECT_EQ(Archives(), std::vector<std::string>{"a.dcf"});

    // Signals take the same way (dcf extract tests all three).
    for (const int signal : {SIGTERM}) {
        SCOPED_TRACE(signal);
        const int dcf = StartDcf(folder_.Native(), replace);
        const bool writing = WaitForTemporaryFile(folder_.Native(), 1);
        ::kill(dcf, signal);
        const Outcome stopped = FinishDcf(folder_.Native(), dcf);
        ASSERT_TRUE(writing);
        EXPECT_EQ(stopped.code, kCancelled) << stopped.err;
        EXPECT_EQ(ReadAll(Path("a.dcf")), before);
        EXPECT_EQ(Archives(), std::vector<std::string>{"a.dcf"});
    }
}

TEST_F(CreateCommandTest, ManifestGivesCategoriesToFilesAndThePreamble) {
    // One category is named for one file and bare for the other: the archive knows its name.
    WriteAll(Path("manifest.json"), R"({
        "reports/2021/a.txt": [{"id": "11234567-89ab-cdef-0123-456789abcdef"},
                               {"id": "01234567-89ab-cdef-0123-456789abcdef", "priority": 3,
                                "hasPriority": true, "kind": 1}],
        "reports/b.bin": [{"id": "11234567-89AB-cdef-0123-456789abcdef", "unified": true,
                           "name": "Payroll"},
                          {"id": "01234567-89ab-cdef-0123-456789abcdef"}]})");
    ASSERT_EQ(Dcf("create c data/reports --password-file password --categories manifest.json").code,
              0);
    const Outcome info = Dcf("info --json c.dcf");
    ASSERT_EQ(info.code, 0) << info.err;
    const auto preamble = nlohmann::json::parse(info.out)["categories"];
    ASSERT_EQ(preamble.size(), 2u);  // the same id of two files once, with all its fields
    for (const auto& category : preamble) {
        const bool payroll = category["id"].get<std::string>().starts_with("11");
        EXPECT_EQ(category["name"], payroll ? "Payroll" : "");
        EXPECT_EQ(category["unified"], payroll);
        EXPECT_EQ(category["priority"], payroll ? 0x7FFFFFFF : 3);
        EXPECT_EQ(category["kind"], payroll ? 0 : 1);
    }

    for (const auto& [manifest, needle] :
         {std::pair<std::string, std::string>{R"({"reports/none": []})", "no such file"},
          {R"({"reports/b.bin": [{"id": "01234567-89ab-cdef-0123-456789abcdef", "name": "A"}],
              "reports/2021/a.txt": [{"id": "01234567-89AB-cdef-0123-456789abcdef",
                                      "name": "B"}]})",
           "has \"name\" \"B\" for reports/2021/a.txt and \"A\" for reports/b.bin"}}) {
        SCOPED_TRACE(manifest);
        WriteAll(Path("bad.json"), manifest);
        ExpectFailure(Dcf("create bad data/reports --password-file password --categories bad.json"),
                      kUsage, "create", needle);
    }
    EXPECT_EQ(Archives(), std::vector<std::string>{"c.dcf"});
}

TEST_F(CreateCommandTest, PasswordIsAskedTwiceWithoutEchoOnATerminal) {
    if (!CanRunOnTerminal()) {
        GTEST_SKIP() << "no script(1) to make a terminal";
    }
    const auto typed = [&](const std::string& archive, const std::string& first,
                           const std::string& second) {
        return RunDcfOnTerminal(folder_.Native(), "create " + archive + " data/notes",
                                {{"Password for", first}, {"Repeat", second}});
    };
    const std::string strong = "correct horse battery staple";
    EXPECT_EQ(typed("t", strong, strong), 0) << ReadAll(Path("transcript"));
    std::string transcript = ReadAll(Path("transcript"));
    EXPECT_EQ(transcript.find(strong), std::string::npos) << transcript;
    // One line end between the two prompts, and no advice for a strong password.
    EXPECT_NE(transcript.find("Password for t: \r\nRepeat the password: \r\n"), std::string::npos)
        << transcript;
    EXPECT_EQ(transcript.find("easy to guess"), std::string::npos) << transcript;
    ASSERT_EQ(Dcf("extract t.dcf -C out --password-stdin", strong + "\n").code, 0);
    EXPECT_EQ(ReadAll(Path("out/notes/n.txt")), "a note");

    // A weak password is taken, with advice; two different ones are not.
    EXPECT_EQ(typed("w", "Password1", "Password1"), 0);
    transcript = ReadAll(Path("transcript"));
    EXPECT_NE(transcript.find("easy to guess"), std::string::npos) << transcript;
    EXPECT_EQ(typed("u", strong, "other"), kUsage);
    EXPECT_NE(ReadAll(Path("transcript")).find("the two passwords differ"), std::string::npos);
    EXPECT_FALSE(fs::exists(Path("u.dcf")));
}

}  // namespace
