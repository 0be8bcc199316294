// Options whose effect nobody would see.
#pragma once

#include <string>

#include "results.h"

namespace CLI {
class App;
}

// What options may act on.
struct OptionUse {
    const ResultOutputs& outputs;
    std::string preview;
    bool keepsChoice = false;  // a session file notes the edges for later
};

// Throws CLI::ValidationError when an option given to the command changes nothing of what is written. What
// a session file says is no option.
void requireUse(const CLI::App& command, const OptionUse& use);
