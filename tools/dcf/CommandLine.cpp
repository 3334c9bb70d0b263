#include "tools/dcf/CommandLine.h"

#include <algorithm>

#include "archive/Archive.h"
#include "tools/dcf/ToolOutput.h"

namespace dcftool {

namespace {

// Edits (insert, delete, replace, swap of neighbours) from `a` to `b`.
std::size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> d(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                d[i][j] = i + j;
                continue;
            }
            d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1,
                                d[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
            }
        }
    }
    return d[a.size()][b.size()];
}

[[noreturn]] void UnknownCommand(const CLI::App& app, const std::string& word) {
    std::string closest;
    std::size_t best = 3;  // more edits than this suggest nothing
    for (const CLI::App* command : app.get_subcommands({})) {
        const std::string& name = command->get_name();
        const std::size_t distance = name.starts_with(word) ? 1 : EditDistance(word, name);
        if (distance < best) {
            best = distance;
            closest = name;
        }
    }
    FailWith("",
             "'" + word + "' is not a command" +
                 (closest.empty() ? "" : "; did you mean '" + closest + "'?") +
                 " See 'dcf --help'.",
             kExitUsage);
}

bool IsCommand(const CLI::App& app, const std::string& word) {
    const auto commands = app.get_subcommands({});
    return std::any_of(commands.begin(), commands.end(),
                       [&](const CLI::App* command) { return command->check_name(word); });
}

}  // namespace

std::vector<std::string> PrepareArguments(const CLI::App& app, int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    if (!arguments.empty() && arguments.front() == "help") {
        arguments.erase(arguments.begin());
        arguments.resize(std::min<std::size_t>(arguments.size(), 1));
        arguments.push_back("--help");
    }
    for (const std::string& argument : arguments) {
        if (!argument.starts_with("-")) {
            if (!IsCommand(app, argument)) {
                UnknownCommand(app, argument);
            }
            break;
        }
        if (app.get_option_no_throw(argument.substr(0, argument.find('='))) == nullptr) {
            FailWith("", "unknown option '" + argument + "'; see 'dcf --help'", kExitUsage);
        }
    }
    return arguments;
}

std::string DescribeParseFailure(const CLI::App* app, const CLI::Error& error) {
    std::string command = "dcf";
    for (const CLI::App* parsed = app; parsed != nullptr;) {
        const auto chosen = parsed->get_subcommands();
        parsed = chosen.empty() ? nullptr : chosen.front();
        command += parsed != nullptr ? " " + parsed->get_name() : "";
    }
    return "dcf: " + std::string(error.what()) + "; see '" + command + " --help'\n";
}

void AddThreadsOption(CLI::App& command, unsigned& threads) {
    command
        .add_option("-T,--threads", threads,
                    "Threads that compress or decompress, 1 to " +
                        std::to_string(kMaxCodecWorkers) +
                        " (default: one per processor, at most 4)")
        ->check(CLI::Range(1u, kMaxCodecWorkers).description(""))
        ->type_name("N");
}

}  // namespace dcftool
