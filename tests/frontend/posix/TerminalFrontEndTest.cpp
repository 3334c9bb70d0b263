// The stub's terminal front end, driven as a user would: a self-extracting copy of the stub
// started on a pseudo-terminal, answered line by line.
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "archive/detail/SfxTrailer.h"
#include "tests/TestFolder.h"
#include "tests/archive/ImageBuilder.h"

namespace {

namespace fs = std::filesystem;
using tests::Bytes;
using tests::ReadBytes;
using tests::WriteBytes;

constexpr auto kPatience = std::chrono::seconds(60);

Bytes Text(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

// The stub followed by `image` and the trailer, executable, under `path`.
void MakeSelfExtractingFile(const fs::path& path, const Bytes& image) {
    Bytes file = ReadBytes(VOMDREL_PATH).value_or(Bytes{});
    ASSERT_FALSE(file.empty());
    file.insert(file.end(), image.begin(), image.end());
    const SfxTrailerBytes trailer = BuildSfxTrailer(image.size());
    file.insert(file.end(), trailer.begin(), trailer.end());
    WriteBytes(path, file);
    fs::permissions(path, fs::perms::owner_all);
}

// A program running on the slave side of a pseudo-terminal.
class TerminalSession {
public:
    explicit TerminalSession(const fs::path& program) {
        winsize wide{};  // room for the whole status line
        wide.ws_row = 40;
        wide.ws_col = 400;
        child_ = forkpty(&master_, nullptr, nullptr, &wide);
        if (child_ == 0) {
            const std::string name = program.string();
            execl(name.c_str(), name.c_str(), static_cast<char*>(nullptr));
            _exit(127);
        }
    }

    ~TerminalSession() {
        if (child_ > 0 && !exited_) {
            kill(child_, SIGKILL);
            waitpid(child_, nullptr, 0);
        }
        if (master_ >= 0) {
            close(master_);
        }
    }

    bool Started() const { return child_ > 0; }

    // Reads until `text` has appeared after what earlier waits consumed; false on timeout
    // or when the program ended without showing it.
    bool WaitFor(const std::string& text) {
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        for (;;) {
            if (const std::size_t at = output_.find(text, consumed_); at != std::string::npos) {
                consumed_ = at + text.size();
                return true;
            }
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
            if (left.count() <= 0 || !ReadSome(static_cast<int>(left.count()))) {
                return false;
            }
        }
    }

    void Type(const std::string& line) {
        const std::string keys = line + "\n";
        ASSERT_EQ(write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    // Waits until the program has switched echo off, so a password typed now is not shown.
    bool WaitForEchoOff() {
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        termios settings{};
        while (tcgetattr(master_, &settings) == 0 && (settings.c_lflag & ECHO) != 0) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return true;
    }

    void PressCtrlC() { ASSERT_EQ(write(master_, "\x03", 1), 1); }

    // Waits for the end of the program and gives its exit status, -1 when it did not exit in
    // time (it is killed then).
    int ExitStatus() {
        const auto deadline = std::chrono::steady_clock::now() + kPatience;
        int status = 0;
        pid_t ended = 0;
        while ((ended = waitpid(child_, &status, WNOHANG)) == 0 &&
               std::chrono::steady_clock::now() < deadline) {
            ReadSome(10);
        }
        while (ReadSome(10)) {
        }
        if (ended != child_) {
            return -1;
        }
        exited_ = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const std::string& Output() const { return output_; }

private:
    bool ReadSome(int timeoutMs) {
        pollfd ready{master_, POLLIN, 0};
        if (poll(&ready, 1, timeoutMs) <= 0) {
            return false;
        }
        char buffer[4096];
        const ssize_t got = read(master_, buffer, sizeof buffer);
        if (got <= 0) {
            return false;  // the slave side closed: the program ended
        }
        output_.append(buffer, static_cast<std::size_t>(got));
        return true;
    }

    int master_ = -1;
    pid_t child_ = -1;
    bool exited_ = false;
    std::string output_;
    std::size_t consumed_ = 0;
};

class TerminalFrontEndTest : public ::testing::Test {
protected:
    // A self-extracting "demo" holding \a.txt and \d\b.txt, sealed with "secret".
    void SetUp() override {
        const Bytes image = tests::BuildImage(
            tests::ImageSettings{}, {u"\\d"},
            {{u"\\a.txt", Text("first file\n"), {}}, {u"\\d\\b.txt", Text("second file\n"), {}}});
        program_ = folder_.Native() / "demo";
        MakeSelfExtractingFile(program_, image);
        target_ = folder_.Native() / "out";
        extracted_ = target_ / "demo";  // the target name rule appends the archive's name
    }

    // Answers the target and credential questions; `target` is typed as it stands.
    void Answer(TerminalSession& session, const std::string& key, const std::string& password,
                const std::string& target = {}) {
        ASSERT_TRUE(session.WaitFor("Extract to [")) << session.Output();
        session.Type(target.empty() ? target_.string() : target);
        ASSERT_TRUE(session.WaitFor("Private key (empty for a password): ")) << session.Output();
        session.Type(key);
        if (key.empty()) {
            ASSERT_TRUE(session.WaitFor("Password: ")) << session.Output();
            ASSERT_TRUE(session.WaitForEchoOff());
            session.Type(password);
        }
    }

    tests::TestFolder folder_;
    fs::path program_;
    fs::path target_;
    fs::path extracted_;
};

// Missing or unreadable credentials are asked for again; then the password, unechoed, extracts.
TEST_F(TerminalFrontEndTest, MissingCredentialsAreAskedForAgainThenThePasswordExtracts) {
    TerminalSession session(program_);
    ASSERT_TRUE(session.Started());
    Answer(session, "", "");
    EXPECT_TRUE(session.WaitFor(
        "Error: Password or path to a private key file is required to extract the archive."))
        << session.Output();
    Answer(session, (folder_.Native() / "no.privkey").string(), "");
    EXPECT_TRUE(session.WaitFor("Error: Unable to read private key from the selected location."))
        << session.Output();
    Answer(session, "", "secret");
    EXPECT_TRUE(session.WaitFor("Extraction has successfully finished")) << session.Output();
    EXPECT_EQ(session.ExitStatus(), 0);
    EXPECT_EQ(ReadBytes(extracted_ / "a.txt"), Text("first file\n"));
    EXPECT_EQ(ReadBytes(extracted_ / "d" / "b.txt"), Text("second file\n"));
    EXPECT_NE(session.Output().find("100%"), std::string::npos) << session.Output();
    EXPECT_EQ(session.Output().find("secret"), std::string::npos) << session.Output();
}

TEST_F(TerminalFrontEndTest, WrongPasswordSaysWhyAndLeavesNoFolderBehind) {
    target_ = folder_.Native() / "new" / "deeper";
    TerminalSession session(program_);
    ASSERT_TRUE(session.Started());
    Answer(session, "", "not the password");
    EXPECT_TRUE(session.WaitFor("Extraction has failed: wrong password or private key"))
        << session.Output();
    EXPECT_EQ(session.ExitStatus(), 0);
    EXPECT_FALSE(fs::exists(folder_.Native() / "new"));  // every level it made is gone again
}

TEST_F(TerminalFrontEndTest, TypedPathsExpandTheHomeFolderAndCompleteWithTab) {
    const fs::path home = folder_.Native() / "home";
    fs::create_directories(home / "keys");
    fs::create_directories(home / "outside");
    const char* saved = std::getenv("HOME");
    const std::string savedHome = saved != nullptr ? saved : "";
    setenv("HOME", home.c_str(), 1);
    TerminalSession session(program_);
    saved != nullptr ? setenv("HOME", savedHome.c_str(), 1) : unsetenv("HOME");
    ASSERT_TRUE(session.Started());
    // "~/o" and Tab: the one folder that fits, completed with its separator.
    Answer(session, "", "secret", "~/o\t");
    EXPECT_TRUE(session.WaitFor("Extraction has successfully finished")) << session.Output();
    EXPECT_NE(session.Output().find("~/outside/"), std::string::npos) << session.Output();
    EXPECT_EQ(session.ExitStatus(), 0);
    EXPECT_EQ(ReadBytes(home / "outside" / "demo" / "a.txt"), Text("first file\n"));
}

TEST_F(TerminalFrontEndTest, AStubWithoutArchiveSaysSoBeforeAsking) {
    TerminalSession session(VOMDREL_PATH);
    ASSERT_TRUE(session.Started());
    EXPECT_TRUE(session.WaitFor("carries no archive")) << session.Output();
    EXPECT_EQ(session.ExitStatus(), 0);
    EXPECT_EQ(session.Output().find("Extract to"), std::string::npos) << session.Output();
}

TEST_F(TerminalFrontEndTest, ReplaceQuestionsKeepOrReplaceEachFile) {
    fs::create_directories(extracted_ / "d");
    WriteBytes(extracted_ / "a.txt", Text("old a"));
    WriteBytes(extracted_ / "d" / "b.txt", Text("old b"));
    TerminalSession session(program_);
    ASSERT_TRUE(session.Started());
    Answer(session, "", "secret");
    ASSERT_TRUE(session.WaitFor("[y]es, [n]o, [c]ancel: ")) << session.Output();
    session.Type("n");
    ASSERT_TRUE(session.WaitFor("[y]es, [n]o, [c]ancel: ")) << session.Output();
    session.Type("y");
    EXPECT_TRUE(session.WaitFor("Extraction has successfully finished")) << session.Output();
    EXPECT_EQ(session.ExitStatus(), 0);
    EXPECT_EQ(ReadBytes(extracted_ / "a.txt"), Text("old a"));
    EXPECT_EQ(ReadBytes(extracted_ / "d" / "b.txt"), Text("second file\n"));
}

TEST_F(TerminalFrontEndTest, CancelAtAReplaceQuestionKeepsFinishedFiles) {
    for (const std::string cancel : {"c", "ctrl-c"}) {
        fs::remove_all(target_);
        fs::create_directories(extracted_ / "d");
        WriteBytes(extracted_ / "d" / "b.txt", Text("old b"));
        TerminalSession session(program_);
        ASSERT_TRUE(session.Started());
        Answer(session, "", "secret");
        ASSERT_TRUE(session.WaitFor("[y]es, [n]o, [c]ancel: ")) << session.Output();
        if (cancel == "c") {
            session.Type("c");
        } else {
            session.PressCtrlC();
        }
        EXPECT_TRUE(session.WaitFor("Extraction has failed")) << cancel << session.Output();
        EXPECT_EQ(session.ExitStatus(), 0);
        EXPECT_EQ(ReadBytes(extracted_ / "a.txt"), Text("first file\n")) << cancel;
        EXPECT_EQ(ReadBytes(extracted_ / "d" / "b.txt"), Text("old b")) << cancel;
    }
}

TEST_F(TerminalFrontEndTest, CtrlCAtAQuestionEndsWithoutExtracting) {
    TerminalSession session(program_);
    ASSERT_TRUE(session.Started());
    ASSERT_TRUE(session.WaitFor("Extract to [")) << session.Output();
    session.PressCtrlC();
    EXPECT_EQ(session.ExitStatus(), 0);
    EXPECT_FALSE(fs::exists(target_));
    EXPECT_EQ(session.Output().find("Extraction has"), std::string::npos) << session.Output();
}

}  // namespace
