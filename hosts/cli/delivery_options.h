// The options that say how the result is delivered, whatever marks find it.
#pragma once

#include "session/output_choice.h"

namespace CLI {
class App;
}

// `choice` is filled while the command is parsed: with what is given alone.
void declareDelivery(CLI::App& command, OutputChoice& choice);
