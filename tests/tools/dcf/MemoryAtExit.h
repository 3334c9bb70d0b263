#pragma once
// A program run to its exit and stopped there, before its memory is gone: what its writable
// memory holds then, for tests that look for secrets which should have been wiped.

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace dcftest {

struct MemoryAtExit {
    int code = -1;                   // the exit code
    std::vector<std::uint8_t> dump;  // every writable mapping, one after the other
    // Where each mapping begins in `dump`, with its line of /proc/PID/maps.
    std::vector<std::pair<std::size_t, std::string>> mappings;

    // The line of the mapping that holds `needle`; empty when none does.
    std::string Find(const std::vector<std::uint8_t>& needle) const;
};

// Runs `program` with `arguments` in `folder`, standard input from `input`, output discarded,
// and reads its writable memory at the moment it exits (through ptrace). False when this system
// does not let a parent trace its child.
bool RunToExit(const std::filesystem::path& folder, const std::string& program,
               const std::vector<std::string>& arguments, const std::string& input,
               MemoryAtExit& result);

}  // namespace dcftest
