// The command line as the user writes it.
#pragma once

namespace CLI {
class App;
}

// Declares the subcommands and their options; parsing runs the chosen command.
void declareCommands(CLI::App& app);
