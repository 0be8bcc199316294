// Options whose effect nobody would see.
#pragma once

#include <string>
#include <vector>

#include "results.h"

namespace CLI {
class App;
}

// What options may act on.
struct OptionUse {
    const ResultOutputs& outputs;
    std::vector<std::string> pictures;  // paths of all that are written, with empty ones
    bool keepsChoice = false;           // a session file notes the edges for later
};

// Throws CLI::ValidationError when an option given to the command changes nothing of what is written. What
// a session file says is no option.
void requireUse(const CLI::App& command, const OptionUse& use);
