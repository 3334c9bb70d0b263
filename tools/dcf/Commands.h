#pragma once
// The commands of dcf. Each adds its subcommand with its options and the action that runs it.

#include <CLI/CLI.hpp>

namespace dcftool {

void AddKeygenCommand(CLI::App& app);
void AddCreateCommand(CLI::App& app);
void AddExtractCommand(CLI::App& app);
void AddListCommand(CLI::App& app);
void AddTestCommand(CLI::App& app);
void AddInfoCommand(CLI::App& app);

}  // namespace dcftool
