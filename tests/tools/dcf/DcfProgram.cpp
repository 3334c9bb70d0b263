#include "tests/tools/dcf/DcfProgram.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <thread>

namespace dcftest {

std::string ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

void WriteAll(const fs::path& path, const std::string& text) {
    if (path.has_parent_path()) {
        fs::create_directories(path.parent_path());
    }
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

std::string Quoted(const fs::path& path) {
    return "'" + path.string() + "'";
}

Outcome RunDcf(const fs::path& folder, const std::string& arguments, const std::string& input,
               const fs::path& program) {
    WriteAll(folder / "stdin", input);
    // In a session of its own, dcf has no terminal to ask on, wherever the tests are run from.
    // Root runs it without the power to pass over file permissions, so that they count.
    const std::string asUser =
        ::geteuid() == 0 ? "setpriv --bounding-set -dac_override,-dac_read_search " : "";
    const std::string command = "cd " + Quoted(folder) + " && setsid -w " + asUser +
                                Quoted(program) + " " + arguments +
                                " <stdin >stdout 2>stderr; echo $? >rc";
    EXPECT_EQ(std::system(command.c_str()), 0);
    return {std::stoi(ReadAll(folder / "rc")), ReadAll(folder / "stdout"),
            ReadAll(folder / "stderr")};
}

int StartDcf(const fs::path& folder, const std::string& arguments) {
    WriteAll(folder / "stdin", "");
    const std::string command = "cd " + Quoted(folder) + " && exec \"" DCF_TOOL_PATH "\" " +
                                arguments + " <stdin >stdout 2>stderr";
    const pid_t process = ::fork();
    if (process == 0) {
        ::execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
        ::_exit(127);
    }
    EXPECT_GT(process, 0);
    return process;
}

Outcome FinishDcf(const fs::path& folder, int process) {
    int status = 0;
    EXPECT_EQ(::waitpid(process, &status, 0), process);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return {code, ReadAll(folder / "stdout"), ReadAll(folder / "stderr")};
}

bool WaitForTemporaryFile(const fs::path& folder, std::uintmax_t bytes) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < end) {
        std::error_code error;
        for (fs::recursive_directory_iterator it(folder, error), last; !error && it != last;
             it.increment(error)) {
            const std::string name = it->path().filename().string();
            std::error_code gone;
            const std::uintmax_t size = fs::file_size(it->path(), gone);
            if (name.rfind("st", 0) == 0 && name.ends_with(".tmp") && !gone && size >= bytes) {
                return true;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

void ExpectFailure(const Outcome& outcome, int code, const std::string& command,
                   const std::string& needle) {
    EXPECT_EQ(outcome.code, code) << outcome.err;
    const std::string prefix = command.empty() ? "dcf: " : "dcf " + command + ": ";
    EXPECT_EQ(outcome.err.rfind(prefix, 0), 0u) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_NE(outcome.err.find(needle), std::string::npos) << outcome.err;
}

bool CanRunOnTerminal() {
    return std::system("command -v script >/dev/null 2>&1 && command -v mkfifo >/dev/null 2>&1") ==
           0;
}

int RunDcfOnTerminal(const fs::path& folder, const std::string& arguments,
                     const std::vector<Exchange>& exchanges) {
    // The shell types into a fifo that script(1) reads as the terminal's keyboard.
    std::string run = "cd " + Quoted(folder) +
                      " || exit 1\n"
                      "rm -f typed transcript rc; mkfifo typed || exit 1\n"
                      "(script -qfec '\"" DCF_TOOL_PATH "\" " +
                      arguments +
                      "' transcript <typed >/dev/null; echo $? >rc) &\n"
                      "exec 3>typed\n"
                      "wait_for() { i=0; while n=$(grep -c -- \"$1\" transcript 2>/dev/null); "
                      "[ \"${n:-0}\" -lt \"$2\" ] && [ $i -lt 200 ]; do sleep 0.05; i=$((i+1)); "
                      "done; "
                      "sleep 0.2; }\n";
    std::map<std::string, int> shown;
    for (const Exchange& exchange : exchanges) {
        run +=
            "wait_for '" + exchange.prompt + "' " + std::to_string(++shown[exchange.prompt]) + "\n";
        run += "printf '%s\\n' '" + exchange.line + "' >&3\n";
    }
    run += "exec 3>&-\nwait\n";
    EXPECT_EQ(std::system(run.c_str()), 0);
    return std::stoi(ReadAll(folder / "rc"));
}

}  // namespace dcftest
