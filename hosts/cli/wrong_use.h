// What is wrong with a command line, as its writer sees it.
#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

// One line for an error of parsing with `app`: what is wrong, and where to look it up.
std::string explain(const CLI::App& app, const CLI::ParseError& error);
