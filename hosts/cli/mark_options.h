// The options that mark: each is a step, in the order in which they are given.
#pragma once

#include <optional>
#include <vector>

#include "session/step.h"

namespace CLI {
class App;
}

struct MarkOptions {
    std::vector<Step> steps;
    std::optional<int> radius;    // of the brushes that follow
    std::optional<double> alpha;  // of the snapped loops that follow
    // Options that no mark has come after yet.
    bool radiusWaits = false;
    bool alphaWaits = false;
};

// `marks` is filled while the command is parsed.
void declareMarks(CLI::App& command, MarkOptions& marks);

// Throws CLI::ValidationError when an option for the marks that follow is the last one.
void requireMarksAfter(const MarkOptions& marks);
