// The command line as the user writes it.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

// Declares the subcommands and their options; parsing runs the chosen command.
void declareCommands(CLI::App& app);

// The words after the program's name, in order. Options whose value may be left out have it joined to
// them, so that they leave any other word after them alone.
std::vector<std::string> wordsOf(int argc, const char* const* argv);
