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

    // The reports tree extracted under `out`, names beginning at "reports".
    void ExpectReports(const fs::path& out) const {
        for (const char* name :
             {"reports/2021/a.txt", "reports/b.bin", "reports/\xC3\xBC\xC3\xB1\xC3\xAF.txt"}) {
            SCOPED_TRACE(name);
            ASSERT_TRUE(fs::exists(out / name));
            EXPECT_EQ(ReadAll(out / name), ReadAll(Path(std::string("data/") + name)));
        }
        EXPECT_TRUE(fs::is_directory(out / "reports/empty"));
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

TEST_F(CreateCommandTest, TreesRoundTripWithNamesFromTheCommonFolder) {
    const Outcome created =
        Dcf("create new data/reports data/notes/ data/reports --password-file password");
    ASSERT_EQ(created.code, 0) << created.err;
    EXPECT_EQ(created.err, "");  // no progress line where there is no terminal
    EXPECT_NE(created.out.find("new.dcf: 4 files, 4 folders"), std::string::npos) << created.out;

    const Outcome listed = Dcf("list --json new.dcf --password-file password");
    ASSERT_EQ(listed.code, 0) << listed.err;
    const auto json = nlohmann::json::parse(listed.out);
    EXPECT_EQ(json["folders"][0], "reports");
    EXPECT_EQ(json["files"].size(), 4u);  // a path given twice is stored once

    ASSERT_EQ(Dcf("extract new.dcf -C out --password-stdin", "secret\n").code, 0);
    ExpectReports(Path("out"));
    EXPECT_EQ(ReadAll(Path("out/notes/n.txt")), "a note");
    EXPECT_EQ(Dcf("extract new.dcf -C wrong --password-stdin", "secreT\n").code, kBadKey);

    // A single file is stored under its own name.
    ASSERT_EQ(Dcf("create one.dcf data/notes/n.txt --password-file password -q").code, 0);
    ASSERT_EQ(Dcf("extract one.dcf -C single --password-file password -q").code, 0);
    EXPECT_EQ(ReadAll(Path("single/n.txt")), "a note");
}

TEST_F(CreateCommandTest, NamesThatCannotBeExtractedEverywhereAreLeftOutWithANote) {
    for (const char* name : {"back\\slash.txt", "colon:name.txt", "aux.txt", "dot.", "blank "}) {
        WriteAll(Path(std::string("data/notes/") + name), "left out");
    }
    WriteAll(Path("data/notes/kept. x"), "kept");
    const Outcome created = Dcf("create odd data/notes --password-file password");
    ASSERT_EQ(created.code, 0) << created.err;
    EXPECT_EQ(std::count(created.err.begin(), created.err.end(), '\n'), 5) << created.err;
    EXPECT_NE(created.err.find("colon:name.txt: a name that Windows can't extract"),
              std::string::npos)
        << created.err;
    EXPECT_NE(created.err.find("back\\slash.txt: a backslash separates names"), std::string::npos)
        << created.err;
    EXPECT_NE(created.out.find("odd.dcf: 2 files"), std::string::npos) << created.out;
    ASSERT_EQ(Dcf("extract odd.dcf -C out --password-file password").code, 0);
    EXPECT_EQ(ReadAll(Path("out/notes/n.txt")), "a note");
    EXPECT_EQ(ReadAll(Path("out/notes/kept. x")), "kept");
}

TEST_F(CreateCommandTest, ArgumentsThatCannotMakeAnArchiveAreRefusedInOneLine) {
    WriteAll(Path("other/x.txt"), "x");
    const Outcome apart = Dcf("create a data/reports other/x.txt --password-file password");
    EXPECT_EQ(apart.code, kUsage);
    ExpectOneLine(apart, "create", "one folder");
    const Outcome missing = Dcf("create a data/nowhere --password-file password");
    EXPECT_EQ(missing.code, kIo);
    ExpectOneLine(missing, "create", "data/nowhere");
    const Outcome noTerminal = Dcf("create a data/reports");
    EXPECT_EQ(noTerminal.code, kUsage);
    ExpectOneLine(noTerminal, "create", "--password-file");
    const Outcome nobody = Dcf("create a data/reports --no-password");
    EXPECT_EQ(nobody.code, kUsage);
    ExpectOneLine(nobody, "create", "--recipient");
    const Outcome tooLong = Dcf("create a data/reports --password-stdin", std::string(65, 'p'));
    EXPECT_EQ(tooLong.code, kUsage);
    ExpectOneLine(tooLong, "create", "64 bytes");
    WriteAll(Path("bad.pubkey"), "0123");
    const Outcome badKey = Dcf("create a data/reports --no-password --recipient bad.pubkey");
    EXPECT_EQ(badKey.code, kBadKey);
    ExpectOneLine(badKey, "create", "not a public key");
    // 1024 digits that are no usable key: all ones has the factor 3.
    WriteAll(Path("ones.pubkey"), std::string(1024, 'f') + "\n");
    const Outcome degenerate = Dcf("create a data/reports --no-password --recipient ones.pubkey");
    EXPECT_EQ(degenerate.code, kBadKey);
    ExpectOneLine(degenerate, "create",
                  "ones.pubkey: not a usable public key: the modulus has the small factor 3");
    EXPECT_EQ(Dcf("create a data/reports --password-file password --stub s").code, kUsage);
    const Outcome noStub = Dcf("create a data/reports --password-file password --sfx --stub s");
    EXPECT_EQ(noStub.code, kIo);
    ExpectOneLine(noStub, "create", "no stub");
    EXPECT_TRUE(Archives().empty());
}

TEST_F(CreateCommandTest, ExistingArchiveIsHandledAsTheOptionSays) {
    ASSERT_EQ(Dcf("create a data/reports --password-file password").code, 0);
    const std::string old = ReadAll(Path("a.dcf"));

    // Without a terminal "ask" can't ask: it stops like "cancel".
    const Outcome asked = Dcf("create a data/reports --password-file password");
    EXPECT_EQ(asked.code, kCancelled);
    ExpectOneLine(asked, "create", "--overwrite");
    EXPECT_EQ(Dcf("create a data/reports --password-file password --overwrite cancel").code,
              kCancelled);
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

    // Ctrl-C takes the same way as these two (dcf extract tests all three).
    for (const int signal : {SIGTERM, SIGHUP}) {
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

TEST_F(CreateCommandTest, RecipientAloneOpensAndSelfExtractingFilesCarryTheStub) {
    ASSERT_EQ(Dcf("keygen --name r --out key").code, 0);
    std::string stub = "#!/bin/sh\necho stub\nexit 0\n";
    stub.resize(5000, '\n');
    WriteAll(Path("stub"), stub);
    fs::permissions(Path("stub"), fs::perms::owner_exec, fs::perm_options::add);

    // A stub that is no Windows program gives a name without ".exe".
    const Outcome created =
        Dcf("create parcel data/reports --no-password --recipient key.pubkey --sfx --stub stub");
    ASSERT_EQ(created.code, 0) << created.err;
    const std::string file = ReadAll(Path("parcel"));
    EXPECT_EQ(file.substr(0, stub.size()), stub);
    EXPECT_NE(fs::status(Path("parcel")).permissions() & fs::perms::owner_exec, fs::perms::none);

    ASSERT_EQ(Dcf("extract parcel -C out --key key.privkey").code, 0);
    ExpectReports(Path("out"));
    EXPECT_EQ(Dcf("extract parcel -C none --password-stdin", "\n").code, kBadKey);
    const Outcome info = Dcf("info --json parcel");
    ASSERT_EQ(info.code, 0);
    EXPECT_EQ(nlohmann::json::parse(info.out)["imageOffset"], stub.size());

    // One that begins like a Windows program does.
    WriteAll(Path("windows-stub"), "MZ" + stub);
    ASSERT_EQ(Dcf("create win data/notes --password-file password --sfx --stub windows-stub").code,
              0);
    EXPECT_EQ(ReadAll(Path("win.exe")).substr(0, stub.size() + 2), "MZ" + stub);
}

TEST_F(CreateCommandTest, ManifestGivesCategoriesToFilesAndThePreamble) {
    WriteAll(Path("manifest.json"), R"({
        "reports/2021/a.txt": [{"id": "01234567-89ab-cdef-0123-456789abcdef", "name": "Payroll",
                                "priority": 3, "hasPriority": true, "kind": 1}],
        "reports/b.bin": [{"id": "11234567-89AB-cdef-0123-456789abcdef", "unified": true},
                          {"id": "01234567-89ab-cdef-0123-456789abcdef"}]})");
    ASSERT_EQ(Dcf("create c data/reports --password-file password --categories manifest.json").code,
              0);
    const Outcome info = Dcf("info --json c.dcf");
    ASSERT_EQ(info.code, 0) << info.err;
    const auto preamble = nlohmann::json::parse(info.out)["categories"];
    ASSERT_EQ(preamble.size(), 2u);  // the same id of two files once
    const Outcome listed = Dcf("list --json c.dcf --password-file password");
    const auto files = nlohmann::json::parse(listed.out)["files"];
    std::size_t tagged = 0;
    for (const auto& entry : files) {
        tagged += entry["categories"].empty() ? 0 : 1;
    }
    EXPECT_EQ(tagged, 2u);

    for (const auto& [manifest, needle] :
         {std::pair<std::string, std::string>{R"({"reports/none": []})", "no such file"},
          {R"({"reports/b.bin": [{"id": "xyz"}]})", "\"id\""},
          {R"({"reports/b.bin": [{"id": "01234567-89ab-cdef-0123-456789abcdef", "colour": 1}]})",
           "colour"},
          {R"({"reports/b.bin": [{"id": "01234567-89ab-cdef-0123-456789abcdef", "kind": "x"}]})",
           "number"},
          {R"([1, 2])", "object"},
          {R"({"reports/b.bin": )", "parse"}}) {
        SCOPED_TRACE(manifest);
        WriteAll(Path("bad.json"), manifest);
        const Outcome bad =
            Dcf("create bad data/reports --password-file password --categories bad.json");
        EXPECT_EQ(bad.code, kUsage);
        ExpectOneLine(bad, "create", needle);
    }
    EXPECT_EQ(Archives(), std::vector<std::string>{"c.dcf"});
}

TEST_F(CreateCommandTest, PasswordIsAskedTwiceWithoutEchoOnATerminal) {
    if (!CanRunOnTerminal()) {
        GTEST_SKIP() << "no script(1) to make a terminal";
    }
    const auto typed = [&](const std::string& archive, const std::string& second) {
        return RunDcfOnTerminal(folder_.Native(), "create " + archive + " data/notes",
                                {{"Password for", "typed-secret"}, {"Repeat", second}});
    };
    EXPECT_EQ(typed("t", "typed-secret"), 0) << ReadAll(Path("transcript"));
    const std::string transcript = ReadAll(Path("transcript"));
    EXPECT_EQ(transcript.find("typed-secret"), std::string::npos) << transcript;
    ASSERT_EQ(Dcf("extract t.dcf -C out --password-stdin", "typed-secret\n").code, 0);
    EXPECT_EQ(ReadAll(Path("out/notes/n.txt")), "a note");

    EXPECT_EQ(typed("u", "other"), kUsage);
    EXPECT_NE(ReadAll(Path("transcript")).find("the two passwords differ"), std::string::npos);
    EXPECT_FALSE(fs::exists(Path("u.dcf")));
}

TEST_F(CreateCommandTest, AnExistingArchiveIsAskedAboutOnATerminal) {
    if (!CanRunOnTerminal()) {
        GTEST_SKIP() << "no script(1) to make a terminal";
    }
    WriteAll(Path("old.dcf"), "old bytes");
    const std::string create = "create old data/notes --password-file password";
    const std::string question =
        "old.dcf exists. Replace it? [y]es, [n]o, [r]ename the new one, [q]uit: ";
    // An answer that is none of the letters asks again; "r" writes under the next free number.
    EXPECT_EQ(
        RunDcfOnTerminal(folder_.Native(), create, {{"Replace it", "x"}, {"Replace it", "R"}}), 0)
        << ReadAll(Path("transcript"));
    EXPECT_NE(ReadAll(Path("transcript")).find(question), std::string::npos)
        << ReadAll(Path("transcript"));
    EXPECT_EQ(ReadAll(Path("old.dcf")), "old bytes");
    ASSERT_EQ(Dcf("extract 'old (1).dcf' -C out --password-file password").code, 0);
    EXPECT_EQ(ReadAll(Path("out/notes/n.txt")), "a note");

    EXPECT_EQ(RunDcfOnTerminal(folder_.Native(), create, {{"Replace it", "n"}}), 0);
    EXPECT_EQ(ReadAll(Path("old.dcf")), "old bytes");
    EXPECT_EQ(RunDcfOnTerminal(folder_.Native(), create, {{"Replace it", "q"}}), kCancelled);
    EXPECT_EQ(ReadAll(Path("old.dcf")), "old bytes");
    EXPECT_EQ(RunDcfOnTerminal(folder_.Native(), create, {{"Replace it", "y"}}), 0);
    ASSERT_EQ(Dcf("extract old.dcf -C replaced --password-file password").code, 0);
    EXPECT_EQ(ReadAll(Path("replaced/notes/n.txt")), "a note");
    EXPECT_EQ(Archives(), (std::vector<std::string>{"old (1).dcf", "old.dcf"}));
}

TEST_F(CreateCommandTest, LongRunsShowTheirProgressOnATerminal) {
    if (!CanRunOnTerminal()) {
        GTEST_SKIP() << "no script(1) to make a terminal";
    }
    // The run counts from its start, before the question about the old archive: answered after
    // more than a second, the writing that follows is past the quiet first second, however fast.
    std::string noise(64 << 20, '\0');
    std::uint64_t state = 88172645463325252ull;
    for (char& byte : noise) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        byte = static_cast<char>(state);
    }
    WriteAll(Path("big/noise.bin"), noise);
    WriteAll(Path("big.dcf"), "old bytes");
    ASSERT_EQ(RunDcfOnTerminal(folder_.Native(), "create big big --password-file password",
                               {{"Replace it", "y", 1.2}}),
              0);
    const std::string transcript = ReadAll(Path("transcript"));
    EXPECT_NE(transcript.find("% "), std::string::npos) << transcript;
    EXPECT_NE(transcript.find(" of 64.0 MiB "), std::string::npos) << transcript;
    EXPECT_NE(transcript.find(" left"), std::string::npos) << transcript;
    // The line is cleared before the summary.
    EXPECT_NE(transcript.find("\rCreated "), std::string::npos) << transcript;
    EXPECT_NE(transcript.find("big.dcf: 1 file, 1 folder, 67108864 bytes"), std::string::npos);
}

}  // namespace
