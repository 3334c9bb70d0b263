// dcf: makes, opens and inspects encrypted archives and the keys that seal them.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <iostream>

#include "DcfVersion.h"
#include "tools/dcf/CommandLine.h"
#include "tools/dcf/Commands.h"
#include "tools/dcf/ToolOutput.h"

int main(int argc, char** argv) {
    CLI::App app{"dcf - encrypted archives and their keys"};
    app.name("dcf");
    app.require_subcommand(1);
    app.set_version_flag("--version", "dcf " DCF_VERSION_TEXT);
    dcftool::AddKeygenCommand(app);
    dcftool::AddCreateCommand(app);
    dcftool::AddExtractCommand(app);
    dcftool::AddListCommand(app);
    dcftool::AddTestCommand(app);
    dcftool::AddInfoCommand(app);
    // Set after the commands, which would otherwise take it over as their own.
    app.footer(
        "Run 'dcf COMMAND --help' or 'dcf help COMMAND' for the options of a command.\n"
        "Exit codes: 0 done, 1 other failure, 2 usage error, 3 wrong password or key, "
        "4 damaged or unsupported archive, 5 input or output failure, 6 cancelled.");
    app.failure_message(dcftool::DescribeParseFailure);
    try {
        std::vector<std::string> arguments = dcftool::PrepareArguments(app, argc, argv);
        std::reverse(arguments.begin(), arguments.end());  // as CLI11 takes them
        app.parse(std::move(arguments));
    } catch (const CLI::RuntimeError& failure) {
        return failure.get_exit_code();  // reported by the command
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error);
        return code == 0 ? 0 : dcftool::kExitUsage;
    } catch (const std::exception& error) {
        std::cerr << "dcf: " << error.what() << '\n';
        return dcftool::kExitFailure;
    }
    return 0;
}
