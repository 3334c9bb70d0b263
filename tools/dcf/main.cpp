// dcf: makes, opens and inspects encrypted archives and the keys that seal them.
#include <CLI/CLI.hpp>

#include "tools/dcf/Commands.h"

int main(int argc, char** argv) {
    CLI::App app{"dcf - encrypted archives and their keys"};
    app.require_subcommand(1);
    app.footer("Run 'dcf COMMAND --help' for the options of a command.");
    dcf::AddKeygenCommand(app);
    CLI11_PARSE(app, argc, argv);
    return 0;
}
