// dcf: makes, opens and inspects encrypted archives and the keys that seal them.
#include <CLI/CLI.hpp>

#include "DcfVersion.h"
#include "tools/dcf/ArchiveOutput.h"
#include "tools/dcf/Commands.h"

int main(int argc, char** argv) {
    CLI::App app{"dcf - encrypted archives and their keys"};
    app.require_subcommand(1);
    app.set_version_flag("--version", "dcf " DCF_VERSION_TEXT);
    app.footer(
        "Run 'dcf COMMAND --help' for the options of a command.\n"
        "Exit codes: 0 done, 1 other failure, 2 usage error, 3 wrong password or key, "
        "4 damaged or unsupported archive, 5 input or output failure, 6 cancelled.");
    dcf::AddKeygenCommand(app);
    dcf::AddCreateCommand(app);
    dcf::AddExtractCommand(app);
    dcf::AddListCommand(app);
    dcf::AddTestCommand(app);
    dcf::AddInfoCommand(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::RuntimeError& failure) {
        return failure.get_exit_code();  // reported by the command
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error);
        return code == 0 ? 0 : dcf::kExitUsage;
    }
    return 0;
}
