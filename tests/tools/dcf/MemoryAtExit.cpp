#include "tests/tools/dcf/MemoryAtExit.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>

namespace dcftest {
namespace {

// The programs under test use a few MiB; the sanitizers reserve terabytes.
constexpr std::uint64_t kLargestMapping = 256u << 20;

// The writable mappings of a stopped process, read through /proc/PID/mem.
void ReadWritableMemory(pid_t process, MemoryAtExit& memory) {
    std::vector<std::uint8_t>& dump = memory.dump;
    std::ifstream maps("/proc/" + std::to_string(process) + "/maps");
    const int mem = ::open(("/proc/" + std::to_string(process) + "/mem").c_str(), O_RDONLY);
    for (std::string line; std::getline(maps, line);) {
        std::istringstream fields(line);
        std::string range;
        std::string permissions;
        fields >> range >> permissions;
        if (permissions.size() < 2 || permissions[1] != 'w') {
            continue;
        }
        const std::uint64_t begin = std::stoull(range.substr(0, range.find('-')), nullptr, 16);
        const std::uint64_t end = std::stoull(range.substr(range.find('-') + 1), nullptr, 16);
        if (end - begin > kLargestMapping) {
            continue;  // a sanitizer's shadow or reserve: nothing of the program's own
        }
        std::vector<std::uint8_t> chunk(end - begin);
        const ssize_t got = ::pread(mem, chunk.data(), chunk.size(), static_cast<off_t>(begin));
        if (got > 0) {
            memory.mappings.emplace_back(dump.size(), line);
            dump.insert(dump.end(), chunk.begin(), chunk.begin() + got);
        }
    }
    ::close(mem);
}

}  // namespace

std::string MemoryAtExit::Find(const std::vector<std::uint8_t>& needle) const {
    const auto found = std::search(
        dump.begin(), dump.end(), std::boyer_moore_horspool_searcher(needle.begin(), needle.end()));
    if (found == dump.end()) {
        return {};
    }
    const auto at = static_cast<std::size_t>(found - dump.begin());
    std::string where = "?";
    for (const auto& [begin, line] : mappings) {
        if (begin <= at) {
            where = line;
        }
    }
    return where;
}

bool RunToExit(const std::filesystem::path& folder, const std::string& program,
               const std::vector<std::string>& arguments, const std::string& input,
               MemoryAtExit& result) {
    const std::filesystem::path inputFile = folder / "stdin-of-traced";
    std::ofstream(inputFile, std::ios::binary) << input;
    const pid_t child = ::fork();
    if (child == 0) {
        if (::chdir(folder.c_str()) != 0 || ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
            ::_exit(126);
        }
        // The leak checker of a sanitizer build refuses to run under a tracer.
        const char* options = std::getenv("ASAN_OPTIONS");
        const std::string asan = std::string(options != nullptr ? options : "") + ":detect_leaks=0";
        ::setenv("ASAN_OPTIONS", asan.c_str(), 1);
        const int in = ::open(inputFile.c_str(), O_RDONLY);
        const int out = ::open("/dev/null", O_WRONLY);
        ::dup2(in, 0);
        ::dup2(out, 1);
        ::dup2(out, 2);
        std::vector<char*> argv{const_cast<char*>(program.c_str())};
        for (const std::string& argument : arguments) {
            argv.push_back(const_cast<char*>(argument.c_str()));
        }
        argv.push_back(nullptr);
        ::execv(program.c_str(), argv.data());
        ::_exit(127);
    }
    int status = 0;
    // The first stop is the exec; from there the exit of the process stops it once more.
    if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status) ||
        ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACEEXIT) != 0) {
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
        return false;
    }
    int pass = 0;
    for (;;) {
        ::ptrace(PTRACE_CONT, child, nullptr, pass);
        if (::waitpid(child, &status, 0) != child || WIFEXITED(status) || WIFSIGNALED(status)) {
            return false;  // gone without the exit stop
        }
        if (status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8))) {
            break;
        }
        pass = WSTOPSIG(status);  // a signal on its way to the program: deliver it
    }
    ReadWritableMemory(child, result);
    unsigned long exitStatus = 0;
    ::ptrace(PTRACE_GETEVENTMSG, child, nullptr, &exitStatus);
    result.code = WIFEXITED(exitStatus) ? WEXITSTATUS(exitStatus) : -1;
    ::ptrace(PTRACE_CONT, child, nullptr, 0);
    ::waitpid(child, &status, 0);
    return true;
}

}  // namespace dcftest
