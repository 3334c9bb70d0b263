#pragma once
// The dcf tool run as a program from its tests: in a folder, with standard input from a string
// or typed on a pseudo-terminal, its exit code and output read back.

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace dcftest {

namespace fs = std::filesystem;

// Exit codes of dcf, as its help text documents them.
constexpr int kUsage = 2;
constexpr int kBadKey = 3;
constexpr int kDamaged = 4;
constexpr int kIo = 5;
constexpr int kCancelled = 6;

std::string ReadAll(const fs::path& path);
// Writes `text` to `path`, making the folders above it.
void WriteAll(const fs::path& path, const std::string& text);
// `path` in single quotes for the shell.
std::string Quoted(const fs::path& path);

struct Outcome {
    int code = -1;
    std::string out;
    std::string err;
};

// Runs dcf in `folder` with `arguments` and `input` on standard input, without a terminal, with
// file permissions in force even for root. `program` is the dcf that runs, the one built by
// default.
Outcome RunDcf(const fs::path& folder, const std::string& arguments, const std::string& input = "",
               const fs::path& program = DCF_TOOL_PATH);

// Starts dcf like RunDcf without waiting for it, and gives its process id, so that a signal
// can reach it while it works.
int StartDcf(const fs::path& folder, const std::string& arguments);
// Waits for a dcf of StartDcf to end; its exit code is 128 + the signal that ended it.
Outcome FinishDcf(const fs::path& folder, int process);
// Waits until a file of at least `bytes` whose name begins with "st" and ends with ".tmp" shows
// under `folder`; false when none came within ten seconds.
bool WaitForTemporaryFile(const fs::path& folder, std::uintmax_t bytes);

// A failure that ends with `code` and is told in one line that begins with "dcf COMMAND: "
// ("dcf: " for none) and holds `needle`.
void ExpectFailure(const Outcome& outcome, int code, const std::string& command,
                   const std::string& needle);

// A prompt to wait for and the line typed once it shows.
struct Exchange {
    std::string prompt;
    std::string line;
};

// Whether script(1) and mkfifo are there to make a pseudo-terminal.
bool CanRunOnTerminal();
// Runs dcf in `folder` on a pseudo-terminal through script(1). Each exchange waits until its
// prompt has shown once more than before (at most ten seconds), then types its line. Gives the
// exit code; what the terminal showed is in `folder`/transcript.
int RunDcfOnTerminal(const fs::path& folder, const std::string& arguments,
                     const std::vector<Exchange>& exchanges);

}  // namespace dcftest
