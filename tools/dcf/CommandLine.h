#pragma once
// What dcf does with its command line around CLI11: "dcf help COMMAND", an unknown command or
// option answered with what was meant, and every parse error in one line that begins "dcf:".

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace dcftool {

// The arguments for CLI11, in order: "help [COMMAND]" becomes "[COMMAND] --help". Ends the
// program as a usage error for a word that is no command and an option that dcf does not know
// in front of the command.
std::vector<std::string> PrepareArguments(const CLI::App& app, int argc, char** argv);

// -T/--threads N into `threads`, which stays 0 (one per processor) when it is not given.
void AddThreadsOption(CLI::App& command, unsigned& threads);

// Words for CLI11's own errors: "dcf: <what>", and where to read more.
std::string DescribeParseFailure(const CLI::App* app, const CLI::Error& error);

}  // namespace dcftool
